// The command line of one command: Qt's parser, negative numbers as words, and the help in two columns.

#include "Arguments.h"

#include "Command.h"
#include "Console.h"
#include "TerminalText.h"
#include "Text.h"

#include <algorithm>

namespace veltor::tool {
namespace {

/// Put before negative numbers, which Qt's parser would take for options. No word of a user holds it.
constexpr QChar numberMark(0xFDD0);

bool isNegativeNumber(const QString& word)
{
    return word.size() > 1 && word[0] == QLatin1Char('-') &&
           (word[1].isDigit() || word[1] == QLatin1Char('.'));
}

QString unmarked(const QString& word)
{
    return word.startsWith(numberMark) ? word.mid(1) : word;
}

/// The words of @p text in lines of at most @p width characters.
QStringList wrapped(const QString& text, int width)
{
    QStringList lines;
    const QStringList words = text.split(QLatin1Char(' '));
    for (const QString& word : words) {
        if (lines.isEmpty() || lines.last().size() + 1 + word.size() > width) {
            lines << word;
        } else {
            lines.last() += QLatin1Char(' ') + word;
        }
    }
    return lines;
}

constexpr int lineWidth = 96;

QString paragraphs(const QString& text)
{
    QString result;
    const QStringList parts = text.split(QLatin1Char('\n'));
    for (const QString& part : parts) {
        result += wrapped(part, lineWidth).join(QLatin1Char('\n')) + QLatin1Char('\n');
    }
    return result;
}

} // namespace

Arguments::Arguments(QString command, QStringList usage, QString text)
    : m_command(std::move(command))
    , m_usage(std::move(usage))
    , m_text(std::move(text))
{}

void Arguments::addFlag(const char* name, const QString& text)
{
    addOption(name, QString(), text);
}

void Arguments::addOption(const char* name, const QString& value, const QString& text)
{
    m_options.emplace_back(QString::fromLatin1(name), text, value);
    m_parser.addOption(m_options.back());
}

bool Arguments::parse(const QStringList& words)
{
    m_options.emplace_back(QStringList{QStringLiteral("h"), QStringLiteral("help")},
                           Text::tr("показать эту справку"));
    m_parser.addOption(m_options.back());
    QStringList marked{m_command}; // in the place of the program's name
    for (const QString& word : words) {
        marked << (isNegativeNumber(word) ? numberMark + word : word);
    }
    if (!m_parser.parse(marked)) {
        throw UsageError(shownLine(m_parser.errorText()));
    }
    if (isSet("help")) {
        print(help());
        return false;
    }
    m_words = m_parser.positionalArguments();
    std::transform(m_words.begin(), m_words.end(), m_words.begin(), &unmarked);
    return true;
}

bool Arguments::isSet(const char* name) const
{
    return m_parser.isSet(QString::fromLatin1(name));
}

QString Arguments::value(const char* name) const
{
    return unmarked(m_parser.value(QString::fromLatin1(name)));
}

void Arguments::expectWords(int least, int most) const
{
    if (m_words.size() < least) {
        throw UsageError(m_words.isEmpty()
                             ? Text::tr("не хватает аргументов")
                             : Text::tr("после '%1' не хватает аргументов").arg(shownLine(m_words.last())));
    }
    if (m_words.size() > most) {
        throw UsageError(Text::tr("лишний аргумент '%1'").arg(shownLine(m_words[most])));
    }
}

int Arguments::number(const char* name, int preset, int least, int most) const
{
    if (!isSet(name)) {
        return preset;
    }
    bool ok = false;
    const int number = value(name).toInt(&ok);
    if (!ok || number < least || number > most) {
        throw UsageError(Text::tr("--%1: ожидается целое число от %2 до %3, а не '%4'")
                             .arg(QLatin1String(name))
                             .arg(least)
                             .arg(most)
                             .arg(shownLine(value(name))));
    }
    return number;
}

void Arguments::refuse(const char* name, const QStringList& choices, const QString& word)
{
    throw UsageError(Text::tr("--%1: ожидается одно из %2, а не '%3'")
                         .arg(QLatin1String(name), choices.join(QLatin1String(", ")), shownLine(word)));
}

QString Arguments::help() const
{
    QString result;
    for (const QString& form : m_usage) {
        result +=
            (result.isEmpty() ? Text::tr("Вызов: ") : QString(Text::tr("Вызов: ").size(), QLatin1Char(' '))) +
            QStringLiteral("veltor %1 %2\n").arg(m_command, form);
    }
    result +=
        QLatin1Char('\n') + paragraphs(m_text) + QLatin1Char('\n') + Text::tr("Ключи:") + QLatin1Char('\n');
    QStringList heads;
    int width = 0;
    for (const QCommandLineOption& option : m_options) {
        QStringList names = option.names();
        for (QString& name : names) {
            name.prepend(name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--"));
        }
        heads << names.join(QLatin1String(", ")) +
                     (option.valueName().isEmpty() ? QString() : QLatin1Char(' ') + option.valueName());
        width = std::max(width, static_cast<int>(heads.last().size()));
    }
    for (std::size_t i = 0; i < m_options.size(); ++i) {
        const QString& head = heads[static_cast<int>(i)];
        const QStringList lines = wrapped(m_options[i].description(), std::max(30, lineWidth - width - 4));
        for (int line = 0; line < lines.size(); ++line) {
            result += QStringLiteral("  ") + (line == 0 ? head : QString()).leftJustified(width) +
                      QStringLiteral("  ") + lines[line] + QLatin1Char('\n');
        }
    }
    return result;
}

} // namespace veltor::tool
