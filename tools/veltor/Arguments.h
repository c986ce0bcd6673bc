#pragma once

#include <QtCore/QCommandLineParser>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <iterator>
#include <vector>

namespace veltor::tool {

/// The words of one command, sorted into options and others, and the command's help.
///
/// Options stand anywhere, as --name VALUE or --name=VALUE; `--` ends them, `-` is a word like others, and so
/// is a negative number: a word of a minus and a digit or point. There are no abbreviations.
class Arguments
{
public:
    /// @param command  the name, as the user typed it
    /// @param usage    what follows the name in the first lines of the help, a line for each form
    /// @param text     what the command does
    Arguments(QString command, QStringList usage, QString text);

    void addFlag(const char* name, const QString& text);
    /// @param value  stands for the value in the help
    void addOption(const char* name, const QString& value, const QString& text);

    /// Sorts the words out.
    /// @return false when help was asked for, and is printed
    /// @throws UsageError
    [[nodiscard]] bool parse(const QStringList& words);

    [[nodiscard]] bool isSet(const char* name) const;
    /// Empty when not set; of several the last.
    [[nodiscard]] QString value(const char* name) const;
    /// The words that are no options.
    [[nodiscard]] const QStringList& words() const { return m_words; }
    /// @throws UsageError unless their number lies between the two
    void expectWords(int least, int most) const;

    /// The value of an option, a whole number of at least @p least and at most @p most.
    /// @throws UsageError
    [[nodiscard]] int number(const char* name, int preset, int least, int most) const;

    /// The value of an option by its word in a table of rows with `name` and `value`; @p preset when not set.
    /// @throws UsageError that lists the words
    template <typename Table, typename Value>
    [[nodiscard]] Value choice(const char* name, const Table& table, Value preset) const
    {
        if (!isSet(name)) {
            return preset;
        }
        const QString word = value(name);
        QStringList names;
        for (const auto& row : table) {
            if (word == QLatin1String(row.name)) {
                return row.value;
            }
            names << QLatin1String(row.name);
        }
        refuse(name, names, word);
    }

    /// @throws UsageError: the value of an option is none of its words
    [[noreturn]] static void refuse(const char* name, const QStringList& choices, const QString& word);

private:
    [[nodiscard]] QString help() const;

    QString m_command;
    QStringList m_usage;
    QString m_text;
    std::vector<QCommandLineOption> m_options;
    QCommandLineParser m_parser;
    QStringList m_words;
};

/// A row of a table for Arguments::choice().
template <typename Value>
struct Named
{
    const char* name;
    Value value;
};

} // namespace veltor::tool
