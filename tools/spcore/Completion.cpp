#include "Completion.h"

#include "Commands.h"

#include <QLocale>
#include <QMap>
#include <algorithm>
#include <iterator>

namespace {

/// Words, and what each means.
using Candidates = QMap<QString, QString>;

Candidates named(QStringList const& words)
{
    Candidates candidates;
    for (QString const& word : words) {
        candidates[word] = QString();
    }
    return candidates;
}

/// The codes of two letters that Qt knows, with their names.
Candidates regions()
{
    Candidates candidates;
    for (QLocale const& locale :
         QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyTerritory)) {
        QString const code = QLocale::territoryToCode(locale.territory());
        if (code.size() == 2) {
            candidates[code] = QLocale::territoryToString(locale.territory());
        }
    }
    return candidates;
}

/// What the help calls \a name, which may be in brackets or followed by dots.
Candidates forPlaceholder(QString name)
{
    name.remove(QLatin1Char('[')).remove(QLatin1Char(']')).remove(QStringLiteral("..."));
    static QStringList const files{QStringLiteral("FILE"), QStringLiteral("SOURCE"),
                                   QStringLiteral("DESTINATION"), QStringLiteral("OUT"),
                                   QStringLiteral("IN")};
    static QStringList const folders{QStringLiteral("FOLDER"), QStringLiteral("DIR")};
    if (files.contains(name)) {
        return named({QStringLiteral(":files")});
    }
    if (folders.contains(name)) {
        return named({QStringLiteral(":folders")});
    }
    return name == QStringLiteral("REGION") ? regions() : Candidates();
}

/// The word that follows \a words in the name of a command: a group, or a command in it.
Candidates nextNames(QStringList const& words)
{
    Candidates candidates;
    for (Command const& command : allCommands()) {
        QStringList const name = command.name.split(QLatin1Char(' '));
        if (name.size() > words.size() && std::equal(words.begin(), words.end(), name.begin())) {
            bool const isWhole = name.size() == words.size() + 1;
            QString& summary = candidates[name[words.size()]];
            summary = isWhole ? command.summary : summary;
        }
    }
    return candidates;
}

/// The option of \a command that is written as \a word; nothing when there is none.
QCommandLineOption const* find(QList<QCommandLineOption> const& options, QString const& word)
{
    auto const found = std::ranges::find_if(options, [&word](QCommandLineOption const& option) {
        return option.names().contains(word.mid(word.startsWith(QStringLiteral("--")) ? 2 : 1));
    });
    return word.startsWith(QLatin1Char('-')) && found != options.end() ? &*found : nullptr;
}

Candidates optionNames(QList<QCommandLineOption> const& options)
{
    Candidates candidates;
    for (QCommandLineOption const& option : options) {
        candidates[QStringLiteral("--") + option.names().constLast()] = option.description();
    }
    return candidates;
}

Candidates valuesOf(Command const& command, QCommandLineOption const& option)
{
    auto const words = command.words.constFind(option.names().constLast());
    return words == command.words.constEnd() ? forPlaceholder(option.valueName()) : named(*words);
}

/// Those for the argument that follows \a words, which stand after the command's name.
Candidates nextArgument(Command const& command, QList<QCommandLineOption> const& options,
                        QStringList const& words)
{
    qsizetype index = 0;
    for (qsizetype i = 0; i < words.size(); ++i) {
        QCommandLineOption const* const option = find(options, words[i]);
        bool const isOption = words[i].size() > 1 && words[i].startsWith(QLatin1Char('-'));
        index += isOption ? 0 : 1;
        i += option != nullptr && !option->valueName().isEmpty() ? 1 : 0;
    }
    if (command.arguments.isEmpty()) {
        return {};
    }
    bool const isRepeated = command.arguments.constLast().name.contains(QStringLiteral("..."));
    qsizetype const last = command.arguments.size() - 1;
    return index <= last || isRepeated ? forPlaceholder(command.arguments[std::min(index, last)].name)
                                       : Candidates();
}

/// \a words with what bash has split at "=" in one piece again.
QStringList joined(QStringList const& words)
{
    QStringList whole;
    bool continues = false;
    for (QString const& word : words) {
        bool const isEqual = word == QStringLiteral("=") && !whole.isEmpty();
        if (isEqual || continues) {
            whole.last() += word;
        } else {
            whole += word;
        }
        continues = isEqual;
    }
    return whole;
}

/// What may follow \a words, of which \a typed has been typed.
Candidates candidatesFor(QStringList const& words, QString const& typed)
{
    Command const* const command = findCommand(words);
    if (command == nullptr) {
        return nextNames(words);
    }
    if (command->name == QStringLiteral("help")) {
        return nextNames(words.mid(1));
    }
    QList<QCommandLineOption> const options = optionsOf(*command);
    QStringList const own = words.mid(command->name.count(QLatin1Char(' ')) + 1);
    QCommandLineOption const* const before = own.isEmpty() ? nullptr : find(options, own.constLast());
    if (before != nullptr && !before->valueName().isEmpty()) {
        return valuesOf(*command, *before);
    }
    if (typed.startsWith(QLatin1Char('-')) && !own.contains(QStringLiteral("--"))) {
        return optionNames(options);
    }
    Candidates candidates = nextArgument(*command, options, own);
    // "contact" is a command and a group.
    candidates.insert(own.isEmpty() ? nextNames(words) : Candidates());
    return candidates;
}

} // namespace

QStringList completions(QStringList words)
{
    bool const isSplit = words.size() > 1 && (words.constLast() == QStringLiteral("=") ||
                                              words[words.size() - 2] == QStringLiteral("="));
    words = joined(words);
    QString typed = words.isEmpty() ? QString() : words.takeLast();
    QString prefix;
    qsizetype const equal = typed.startsWith(QStringLiteral("--")) ? typed.indexOf(QLatin1Char('=')) : -1;
    if (equal > 0) {
        words += typed.left(equal);
        // A shell that splits here wants the value alone.
        prefix = isSplit ? QString() : typed.left(equal + 1);
        typed = typed.mid(equal + 1);
    }
    QStringList lines;
    for (auto const& [word, meaning] : candidatesFor(words, typed).asKeyValueRange()) {
        if (word.startsWith(QLatin1Char(':'))) {
            lines += word;
        } else if (word.startsWith(typed)) {
            lines += prefix + word + QLatin1Char('\t') + meaning;
        }
    }
    return lines;
}
