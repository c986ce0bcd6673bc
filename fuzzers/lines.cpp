// Bytes that come in pieces of any size: read by lines, characters and blanks, they are what they would be in
// one piece. Fields of limited size, and walks by code points, of the same text.

#include "Fuzz.h"

#include <veltor/utils/LineStream.h>
#include <veltor/utils/TextCodecs.h>

#include "support/Pieces.h"

#include <QTextCodec>
#include <QtCore/QTextStream>

#include <vector>

using namespace veltor::utils;
using veltor::fuzz::demand;
using veltor::test::Pieces;

namespace {

bool isBreak(QChar c)
{
    return c == QLatin1Char('\n') || c == QLatin1Char('\r');
}

/// The same reader over a text in one piece.
struct Model
{
    QString text;
    int at = 0;

    QChar getChar() { return at < text.size() ? text[at++] : QChar(); }
    void skipWhiteSpace()
    {
        while (at < text.size() && text[at].isSpace()) {
            ++at;
        }
    }
    QString readLine()
    {
        const int begin = at;
        while (at < text.size() && !isBreak(text[at])) {
            ++at;
        }
        const QString line = text.mid(begin, at - begin);
        while (at < text.size() && isBreak(text[at])) {
            ++at;
        }
        return line;
    }
};

void checkLines(const QByteArray& script, const QByteArray& bytes, int capacity)
{
    QTextCodec* const codec = codecForName(QStringLiteral("UTF-8"));
    QTextCodec::ConverterState state;
    Model model{codec->toUnicode(bytes.constData(), bytes.size(), &state)};
    Pieces pieces(script, bytes);
    QTextStream source(&pieces);
    source.setCodec(codec);
    source.setAutoDetectUnicode(false);
    LineStream stream(source, capacity);
    for (int step = 0; step < 3 * model.text.size() + 3; ++step) {
        switch (script.isEmpty() ? 0 : (script[step % script.size()] >> 5) & 7) {
        case 0:
            demand(stream.getChar() == model.getChar(), "pieces have the characters of the whole");
            break;
        case 1:
            stream.skipWhiteSpace();
            model.skipWhiteSpace();
            break;
        case 2:
            stream.fillBuffer();
            break;
        case 3:
            demand(stream.atEnd() == (model.at == model.text.size()), "pieces end where the whole ends");
            break;
        default:
            demand(stream.readLine() == model.readLine(), "pieces have the lines of the whole");
        }
    }
}

void checkFields(const QString& text, int most)
{
    for (const char* name : {"UTF-8", "ISO-8859-1", "windows-1251", "UTF-16LE", "UTF-32BE", "GB18030"}) {
        QTextCodec* const codec = codecForName(QLatin1String(name));
        bool fits = false;
        const QByteArray field = fromUnicode(text, most, codec, &fits);
        const QByteArray whole = codec->fromUnicode(text);
        demand(field.size() <= most && fits == (whole.size() <= most && text.size() <= most),
               "a field says whether the text fits", QLatin1String(name));
        demand(!fits || field == whole, "a field holds a text that fits", QLatin1String(name));
    }
}

void checkPoints(const QString& text)
{
    std::vector<uint> forth;
    std::vector<uint> back;
    QString again;
    enumUTF32(text, [&](uint point) { return forth.push_back(point), true; });
    enumUTF32reverse(text, [&](uint point) { return back.push_back(point), true; });
    demand(std::equal(forth.begin(), forth.end(), back.rbegin(), back.rend()), "both ways are one way");
    for (const uint point : forth) {
        again += point < 0x10000 ? QString(QChar(point)) : QString::fromUcs4(&point, 1);
    }
    demand(again == text, "the code points are the text");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    std::string_view rest = veltor::fuzz::textOf(bytes, size);
    const std::string_view first = veltor::fuzz::takeLine(rest);
    const QByteArray script(first.data(), static_cast<int>(first.size()));
    const QByteArray text(rest.data(), static_cast<int>(rest.size()));
    const QByteArray valid =
        veltor::fuzz::decoded(rest).toUtf8(); // of other bytes Qt makes more or fewer marks
    for (const int capacity : {0, 1, script.isEmpty() ? 2 : script[0] % 8}) {
        checkLines(script, valid, capacity);
    }
    const QString units(reinterpret_cast<const QChar*>(text.constData()), text.size() / 2);
    checkPoints(units);
    checkFields(veltor::fuzz::decoded(rest), script.size());
    return 0;
}
