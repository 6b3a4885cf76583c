#pragma once

#include <QHttpMultiPart>
#include <QString>
#include <QVariant>
#include <memory>

namespace SoftphoneQml {

/// The form that a script describes by an object.
class FormFromScript
{
public:
    /// Reads \a object, see TransfersExtension::postForm(), and opens its files.
    explicit FormFromScript(QVariantMap const& object);

    /// What is wrong, for the script's author; empty when nothing is.
    [[nodiscard]] QString const& problem() const { return m_problem; }

    /// Whether that is a file which cannot be read, and no mistake of the script.
    [[nodiscard]] bool isUnreadable() const { return m_isUnreadable; }

    /// Gives the form away; of no use when there is a problem.
    [[nodiscard]] QHttpMultiPart* release() { return m_form.release(); }

private:
    void add(QString const& name, QVariant const& value);
    void addFile(QString const& name, QVariantMap const& file);

    std::unique_ptr<QHttpMultiPart> m_form;
    QString m_problem;
    bool m_isUnreadable = false;
};

} // namespace SoftphoneQml
