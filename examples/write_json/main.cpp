// Writes places as GeoJSON.
//
//     write_json OUTPUT NAME LON LAT [NAME LON LAT]...

#include <veltor/IOPtr.h>
#include <veltor/json/JsonFormatter.h>
#include <veltor/utils/Rounding.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QSaveFile>
#include <QtCore/QStringList>

#include <cstdio>
#include <utility>

using veltor::json::Format;
using veltor::json::JsonFormatter;
using veltor::utils::getRound;

namespace {

QJsonObject place(const QString& name, double longitude, double latitude)
{
    // Seven places of a degree are a centimetre.
    const QJsonArray position = {getRound(longitude, 7), getRound(latitude, 7)};
    return {{QStringLiteral("type"), QStringLiteral("Feature")},
            {QStringLiteral("geometry"), QJsonObject{{QStringLiteral("type"), QStringLiteral("Point")},
                                                     {QStringLiteral("coordinates"), position}}},
            {QStringLiteral("properties"), QJsonObject{{QStringLiteral("name"), name}}}};
}

//! [write]
bool write(const QString& path, const QJsonValue& value)
{
    QSaveFile file(path); // buffers, as the formatter wants it, and replaces the file at the end
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    Format format = JsonFormatter::formatIndented;
    format.indent = QByteArrayLiteral("  ");
    veltor::IOPtr lent(&file, [](QIODevice*) {}); // the file stays ours
    JsonFormatter(std::move(lent), format).write(value);
    return file.commit(); // the formatter reports nothing: the device knows
}
//! [write]

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.size() < 4 || words.size() % 3 != 1) {
        std::fputs("Usage: write_json OUTPUT NAME LON LAT [NAME LON LAT]...\n", stderr);
        return 2;
    }
    QJsonArray places;
    for (int i = 1; i < words.size(); i += 3) {
        places << place(words[i], words[i + 1].toDouble(), words[i + 2].toDouble());
    }
    const QJsonObject collection = {{QStringLiteral("type"), QStringLiteral("FeatureCollection")},
                                    {QStringLiteral("features"), places}};
    return write(words[0], collection) ? 0 : 1;
}
