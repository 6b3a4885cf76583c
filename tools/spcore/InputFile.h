#pragma once

#include <QString>
#include <memory>

class QTemporaryFile;

/// A file that a command hands on by its path, whatever the user has named: standard input ("-") lies in a
/// temporary file as long as this object lives, and a name that is no UTF-8 gets another one.
class InputFile
{
public:
    explicit InputFile(QString const& named);
    ~InputFile();
    InputFile(InputFile const&) = delete;
    InputFile& operator=(InputFile const&) = delete;

    /// Why it cannot be read, as Reason has it; empty when nothing is in the way.
    [[nodiscard]] QString const& problem() const { return m_problem; }

    /// A path that the library takes.
    [[nodiscard]] QString const& path() const { return m_path; }

    /// Whether the user means standard input by \a named.
    [[nodiscard]] static bool isStandardInput(QString const& named);

    /// How messages call what the user has named \a named.
    [[nodiscard]] static QString shown(QString const& named);

private:
    void copyStandardInput();
    void openByDescriptor();

    QString m_path;
    QString m_problem;
    std::unique_ptr<QTemporaryFile> m_copy;
    int m_descriptor = -1;
};
