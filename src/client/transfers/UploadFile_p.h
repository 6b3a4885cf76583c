#pragma once

#include <QFile>

namespace Softphone {

/// A file to send, as long as it was when it was opened; it notices when it turns out to be shorter, or
/// cannot be read to its end.
class UploadFile : public QFile
{
public:
    explicit UploadFile(QString const& path, QObject* parent = nullptr);

    /// Opens a regular file to read it; false for anything else.
    [[nodiscard]] bool openRegular();

    [[nodiscard]] bool hasFailed() const { return m_hasFailed; }
    [[nodiscard]] qint64 size() const override { return m_size; }

protected:
    qint64 readData(char* data, qint64 most) override;

private:
    qint64 m_size = 0;
    bool m_hasFailed = false;
};

} // namespace Softphone
