#pragma once

#include "JsonInput.h"

#include <QtCore/QString>

#include <rapidjson/error/error.h>

#include <stdexcept>

namespace veltor::tool {

/// What is wrong with a JSON text, and where: "line 3, offset 120: ...".
class JsonFault : public std::runtime_error
{
public:
    JsonFault(const JsonInput& input, qint64 offset, const QString& text);
};

/// The parser's fault in words.
[[nodiscard]] QString jsonFaultText(rapidjson::ParseErrorCode code, bool atEnd);

} // namespace veltor::tool
