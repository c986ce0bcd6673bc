// Encoding into fields of limited size; walks by code points; codecs of files.

#include <veltor/utils/TextCodecs.h>

#include <veltor/logging/Logger.h>

#include "base/QtDifferences.h"

#include <QTextCodec>
#include <QtCore/QFile>
#include <QtCore/QObject>
#include <QtCore/QSet>

#include <algorithm>
#include <stdexcept>

namespace veltor::utils {
namespace {

// The call site as log readers know it.
constexpr char logFile[] = "QtUtils";
constexpr char logFunction[] =
    "QByteArray veltor::utils::fromUnicodeVerbose(const QString&, int, QTextCodec*, bool*)";

constexpr int namedCharacters = 21;
constexpr int longestByteOrderMark = 4;

/// As Qt 5 encodes a whole text: Qt 6 leaves the mark out, and takes half a pair at the end for a character.
QByteArray encoded(const QString& text, base::Length length, const QTextCodec& codec)
{
    const int mib = codec.mibEnum(); // of UTF-8 106
    const bool isUtf16 = mib >= 1013 && mib <= 1015;
    const bool isUtf32 = mib >= 1017 && mib <= 1019;
    if ((mib == 106 || isUtf32) && length > 0 && text.at(length - 1).isHighSurrogate()) {
        --length;
    }
    const auto count = static_cast<int>(length);
    if (!isUtf16 && !isUtf32) {
        return codec.fromUnicode(text.constData(), count);
    }
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    const QChar mark(QChar::ByteOrderMark);
    const QByteArray begin = codec.fromUnicode(&mark, 1, &state);
    return begin + codec.fromUnicode(text.constData(), count, &state);
}

} // namespace

QTextCodec* codecForName(const QString& name)
{
    if (QTextCodec* codec = QTextCodec::codecForName(name.toLatin1())) {
        return codec;
    }
    const QString message = QObject::tr("Неизвестная кодировка %1").arg(name.left(namedCharacters));
    throw std::invalid_argument(message.toStdString());
}

QByteArray fromUnicode(const QString& text, int maxBytes, QTextCodec* codec, bool* fits)
{
    const int limit = std::max(maxBytes, 0);
    bool whole = text.size() <= maxBytes;
    QByteArray bytes = encoded(text, std::min<base::Length>(text.size(), limit), *codec);
    if (bytes.size() > limit) {
        bytes.truncate(limit);
        whole = false;
    }
    if (fits != nullptr) {
        *fits = whole;
    }
    return bytes;
}

QByteArray fromUnicodeVerbose(const QString& text, int maxBytes, QTextCodec* codec, bool* fits)
{
    bool whole = false;
    QByteArray bytes = fromUnicode(text, maxBytes, codec, &whole);
    if (!whole) {
        const QString message =
            QObject::tr("Строка %1... в кодировке %2 превышает допустимый размер %0")
                .arg(QString::number(maxBytes), codec->toUnicode(bytes), QString::fromLatin1(codec->name()));
        logging::LoggerMessager(logging::LogLevel::Warning, logFile, __LINE__, logFunction).write(message);
    }
    if (fits != nullptr) {
        *fits = whole;
    }
    return bytes;
}

bool enumUTF32(const QString& text, const std::function<bool(unsigned int)>& visitor)
{
    for (base::Length i = 0; i < text.size(); ++i) {
        uint point = text.at(i).unicode();
        if (QChar::isHighSurrogate(point) && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            ++i;
            point = QChar::surrogateToUcs4(static_cast<ushort>(point), text.at(i).unicode());
        }
        if (!visitor(point)) {
            return false;
        }
    }
    return true;
}

bool enumUTF32reverse(const QString& text, const std::function<bool(unsigned int)>& visitor)
{
    for (base::Length i = text.size() - 1; i >= 0; --i) {
        uint point = text.at(i).unicode();
        if (QChar::isLowSurrogate(point) && i > 0 && text.at(i - 1).isHighSurrogate()) {
            --i;
            point = QChar::surrogateToUcs4(text.at(i).unicode(), static_cast<ushort>(point));
        }
        if (!visitor(point)) {
            return false;
        }
    }
    return true;
}

QStringList availableCodecs()
{
    QStringList names;
    QSet<QString> known;
    const QList<int> mibs = QTextCodec::availableMibs();
    for (const int mib : mibs) {
        if (const QTextCodec* codec = QTextCodec::codecForMib(mib)) {
            const QString name = QString::fromLatin1(codec->name().constData());
            if (!known.contains(name)) {
                known.insert(name);
                names.append(name);
            }
        }
    }
    return names;
}

QTextCodec* codecForTextFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return nullptr;
    }
    // A mark holds no line feed, so the first line need not be read to its end. Qt counts a zero byte that
    // it puts behind the line.
    const QByteArray start = file.readLine(longestByteOrderMark + 1);
    return QTextCodec::codecForUtfText(start, nullptr);
}

} // namespace veltor::utils
