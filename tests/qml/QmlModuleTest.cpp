#include <AssetsBundle.h>
#include <QQmlEngine>
#include <QQmlError>
#include <QtQuickTest/quicktest.h>
#include <TestEnvironment.h>
#include <memory>

/// What the tests in QML find; and remembers whether the engine had anything to say.
class ModuleSetup : public QObject
{
    Q_OBJECT

public:
    [[nodiscard]] bool hasWarned() const { return m_warned; }

public Q_SLOTS:
    void applicationAvailable() // NOLINT(readability-convert-member-functions-to-static): called by its name
    {
        m_bundle = std::make_unique<AssetsBundle>(QCoreApplication::applicationDirPath());
        QStringList statements = AssetsBundle::validStatements();
        statements << QStringLiteral("INSERT INTO tbl_PALETTE VALUES ('shadow', 'soft', 'hard'), "
                                     "('dark', '#123456', '#123456'), ('keys', '#123456', '#123456')")
                   << QStringLiteral("INSERT INTO tbl_STRINGS VALUES ('call.start', 'Chiama', 'Call'), "
                                     "('language', 'Lingua', 'Language')");
        AssetsBundle::makeDatabase(m_bundle->database(), statements);
    }

    void qmlEngineAvailable(QQmlEngine* engine)
    {
        connect(engine, &QQmlEngine::warnings, this, [this](QList<QQmlError> const& warnings) {
            m_warned = true;
            for (QQmlError const& warning : warnings) {
                fprintf(stderr, "warning of the engine: %s\n", qPrintable(warning.toString()));
            }
        });
    }

private:
    std::unique_ptr<AssetsBundle> m_bundle;
    bool m_warned = false;
};

int main(int argc, char** argv)
{
    TestEnvironment const environment;
    qputenv("QML2_IMPORT_PATH", QML_IMPORT_DIR);
    ModuleSetup setup;
    int const failed = quick_test_main_with_setup(argc, argv, "QmlModuleTest", QML_TESTS, &setup);
    return failed != 0 ? failed : static_cast<int>(setup.hasWarned());
}

#include "QmlModuleTest.moc"
