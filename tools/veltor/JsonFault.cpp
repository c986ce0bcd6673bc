// The faults of a JSON text in words.

#include "JsonFault.h"

#include "TerminalText.h"
#include "Text.h"

namespace veltor::tool {

JsonFault::JsonFault(const JsonInput& input, qint64 offset, const QString& text)
    : std::runtime_error(
          shownLine(Text::tr("строка %1, смещение %2: ").arg(input.lineOf(offset)).arg(offset) + text)
              .toStdString())
{}

QString jsonFaultText(rapidjson::ParseErrorCode code, bool atEnd)
{
    using namespace rapidjson;
    if (atEnd) {
        return Text::tr("текст JSON обрывается");
    }
    switch (code) {
    case kParseErrorObjectMissName:
        return Text::tr("ожидается имя члена объекта в кавычках");
    case kParseErrorObjectMissColon:
        return Text::tr("ожидается двоеточие");
    case kParseErrorObjectMissCommaOrCurlyBracket:
        return Text::tr("ожидается запятая или }");
    case kParseErrorArrayMissCommaOrSquareBracket:
        return Text::tr("ожидается запятая или ]");
    case kParseErrorStringUnicodeEscapeInvalidHex:
    case kParseErrorStringEscapeInvalid:
        return Text::tr("недопустимый символ или \\ в строке");
    case kParseErrorStringUnicodeSurrogateInvalid:
        return Text::tr("половина суррогатной пары в строке");
    case kParseErrorStringMissQuotationMark:
        return Text::tr("строка не закрыта");
    case kParseErrorStringInvalidEncoding:
        return Text::tr("строка не в UTF-8");
    case kParseErrorNumberTooBig:
        return Text::tr("число слишком велико");
    case kParseErrorNumberMissFraction:
    case kParseErrorNumberMissExponent:
        return Text::tr("в числе не хватает цифр");
    default:
        return Text::tr("недопустимое значение");
    }
}

} // namespace veltor::tool
