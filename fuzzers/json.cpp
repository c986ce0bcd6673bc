// A line with a name and a language, then a JSON text: members are found as a search from the first to the
// last finds them; what is written in any layout is read as what it was.

#include "Fuzz.h"

#include <veltor/json/JsonFormatter.h>
#include <veltor/utils/NoCaseJsonObject.h>

#include <QtCore/QBuffer>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <optional>
#include <vector>

using namespace veltor;
using veltor::fuzz::demand;

/// Qt 5's JSON parser leaks a little of some texts that it refuses.
extern "C" const char* __asan_default_options() // NOLINT(bugprone-reserved-identifier)
{
    return "detect_leaks=0";
}

namespace {

bool isSame(const QString& a, const QString& b)
{
    return QString::compare(a, b, Qt::CaseInsensitive) == 0;
}

/// The member that is meant: the last of those with the name, else the alias's.
struct Model
{
    QJsonObject object;
    std::vector<std::pair<QString, QString>> aliases; ///< and the member's name

    [[nodiscard]] std::optional<QString> find(const QString& name) const
    {
        std::optional<QString> found;
        const QStringList keys = object.keys();
        for (const QString& key : keys) {
            found = isSame(key, name) ? key : found;
        }
        for (const auto& [alias, key] : aliases) {
            found = !found && isSame(alias, name) ? key : found;
        }
        return found;
    }
    void add(const QString& name, const QString& alias)
    {
        const std::optional<QString> key = find(name);
        if (key && !find(alias)) {
            aliases.emplace_back(alias, *key);
        }
    }
};

void checkNames(const QJsonObject& object, const QString& name)
{
    Model model{object, {}};
    utils::NoCaseJsonObject found(object);
    QStringList names = object.keys();
    names << name;
    for (int i = 0; i < names.size(); i += 3) {
        model.add(names[i], names[i] + name);
        found.addAlias(names[i], names[i] + name);
        model.add(names[i] + name, name);
        found.addAlias(names[i] + name, name);
    }
    demand(found.size() == object.size(), "aliases do not count");
    for (const QString& one : names) {
        for (const QString& spelling : {one, one.toUpper(), one.toLower(), one + name}) {
            const std::optional<QString> key = model.find(spelling);
            demand(found.contains(spelling) == key.has_value(), "a name is there as a search says", spelling);
            demand(found.value(spelling) == (key ? object.value(*key) : QJsonValue(QJsonValue::Null)),
                   "a name finds what a search finds", spelling);
        }
    }
}

QByteArray written(const QJsonValue& value, const json::Format& layout)
{
    QBuffer buffer;
    json::JsonFormatter(IOPtr(&buffer, [](QIODevice*) {}), layout).write(value);
    return buffer.data();
}

QJsonValue valueOf(const QJsonDocument& document)
{
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

/// The text once more, by way of its values.
QByteArray readAgain(QByteArray text)
{
    text.replace('\0', ""); // what stands behind truth values
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    demand(error.error == QJsonParseError::NoError, "what is written is JSON", error.errorString());
    return written(valueOf(document), json::JsonFormatter::formatCompact);
}

void checkText(const QJsonValue& value)
{
    const QByteArray compact = written(value, json::JsonFormatter::formatCompact);
    // A half of a pair has no UTF-8, infinity no JSON.
    if (compact.contains('?') || compact.contains("inf")) {
        return;
    }
    const QByteArray expected = readAgain(compact);
    demand(readAgain(expected) == expected && expected.size() == compact.size(), "what was written stays",
           QString::fromUtf8(compact));
    for (json::Format layout :
         {json::JsonFormatter::formatIndented, json::JsonFormatter::formatBracketsIndented,
          json::JsonFormatter::formatCommaFirst}) {
        layout.numberFormat.setPresentation(utils::NumberFormat::Shortest);
        demand(readAgain(written(value, layout)) == expected, "all layouts are the same values",
               QString::fromUtf8(compact));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    std::string_view rest = veltor::fuzz::textOf(bytes, size);
    const QString name = veltor::fuzz::decoded(veltor::fuzz::takeLine(rest));
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray(rest.data(), static_cast<int>(rest.size())));
    if (document.isNull()) {
        return 0;
    }
    checkNames(document.object(), name);
    const QString text = utils::jsonToLocalizedString(document.object(), QLocale(name));
    bool isThere = text.isEmpty();
    const QJsonObject object = document.object();
    for (const QJsonValue& value : object) {
        isThere = isThere || value.toString() == text;
    }
    demand(isThere, "a translation is one of those given", text);
    checkText(valueOf(document));
    return 0;
}
