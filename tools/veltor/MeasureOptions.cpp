#include "MeasureOptions.h"

#include "Command.h"

#include <array>

namespace veltor::tool {
namespace {

using json::EndOfLine;
using json::JsonFormatter;

} // namespace

MeasureOptions measureOptions(const Arguments& arguments)
{
    // Built at run time: on Windows the address of another library's object is no constant.
    const std::array layouts{
        Named<const json::Format*>{"compact", &JsonFormatter::formatCompact},
        Named<const json::Format*>{"squeeze", &JsonFormatter::formatSqueeze},
        Named<const json::Format*>{"indented", &JsonFormatter::formatIndented},
        Named<const json::Format*>{"unindented", &JsonFormatter::formatUnindented},
        Named<const json::Format*>{"brackets-indented", &JsonFormatter::formatBracketsIndented},
        Named<const json::Format*>{"comma-first", &JsonFormatter::formatCommaFirst},
        Named<const json::Format*>{"delimited", &JsonFormatter::formatDelimited},
    };
    constexpr std::array lineEnds{
        Named<EndOfLine>{"lf", EndOfLine::Lf},
        Named<EndOfLine>{"crlf", EndOfLine::CrLf},
        Named<EndOfLine>{"cr", EndOfLine::Cr},
    };
    MeasureOptions options;
    options.layout = arguments.choice("layout", layouts, options.layout);
    options.endOfLine = arguments.choice("eol", lineEnds, options.endOfLine);
    options.json = arguments.isSet("json") || arguments.isSet("layout") || arguments.isSet("eol");
    options.hasEllipsoid = arguments.isSet("ellipsoid");
    if (options.hasEllipsoid) {
        options.ellipsoid = parseEllipsoid(arguments.value("ellipsoid"));
    }
    options.largest = arguments.number("largest", 0, 1, 1000000000);
    options.mode = arguments.value("mode");
    return options;
}

} // namespace veltor::tool
