// GeoJSON as a stream: one JSON text after the other goes through the parser.

#include "GeoJsonReader.h"

#include "JsonFault.h"
#include "JsonInput.h"
#include "MapHandler.h"
#include "Text.h"

#include <rapidjson/reader.h>

namespace veltor::tool {
namespace {

/// True when another text begins, after what may stand between two: a line end, or a record separator.
bool skipToText(JsonInput& input, bool isFirst)
{
    bool isSeparated = isFirst;
    for (;;) {
        const char c = input.Peek();
        if (c == '\n' || c == '\x1e') {
            isSeparated = true;
        } else if (c != ' ' && c != '\t' && c != '\r') {
            break;
        }
        input.Take();
    }
    if (!input.atEnd() && !isSeparated) {
        throw JsonFault(input, input.offset(), Text::tr("после карты ожидается конец строки или файла"));
    }
    return !input.atEnd();
}

} // namespace

void readGeoJson(QIODevice& device, const MapReading& reading)
{
    using namespace rapidjson;
    constexpr unsigned flags = kParseStopWhenDoneFlag | kParseValidateEncodingFlag | kParseIterativeFlag;
    JsonInput input(device);
    MapHandler handler(input, reading);
    Reader parser;
    bool isFirst = true;
    while (skipToText(input, isFirst)) {
        isFirst = false;
        const ParseResult result = parser.Parse<flags>(input, handler);
        if (!result.IsError()) {
            continue;
        }
        // The parser's offset may be narrower than the file is long.
        const auto back = static_cast<qint64>(input.Tell() - result.Offset());
        if (result.Code() == kParseErrorTermination) {
            // At the bracket that follows, or the number that was read.
            throw JsonFault(input, input.offset() - back, handler.place() + handler.fault());
        }
        throw JsonFault(input, input.offset() - back,
                        handler.place() + jsonFaultText(result.Code(), input.atEnd()));
    }
    if (isFirst) {
        throw JsonFault(input, input.offset(), Text::tr("файл пуст"));
    }
}

} // namespace veltor::tool
