// Texts across the border.

#include <veltor/python/PythonBridge.h>

#include "base/QtDifferences.h"
#include "python/FetchedError.h"
#include "python/PythonRef.h"
#include "python/WideText.h"

#include <QtCore/QtEndian>

#include <cstring>
#include <limits>

#include "python/PythonApi.h"

namespace veltor::python {
namespace {

QString fromUtf8(const char* text)
{
    const std::size_t size = std::strlen(text);
    if (size > std::size_t(std::numeric_limits<int>::max())) {
        return {};
    }
    const QString decoded = QString::fromUtf8(text, static_cast<int>(size));
    // Qt takes a leading byte-order mark for a property of the encoding, Python for a character.
    const bool hasMark = std::strncmp(text, "\xEF\xBB\xBF", 3) == 0;
    return hasMark ? QChar(QChar::ByteOrderMark) + decoded : decoded;
}

/// The way for text with lone surrogates, which UTF-8 does not have.
QString fromUtf16(PyObject* o)
{
    const char* const codec = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? "utf-16-le" : "utf-16-be";
    const PythonRef bytes(api().PyUnicode_AsEncodedString(o, codec, "surrogatepass"));
    const Py_ssize_t size = bytes ? api().PyBytes_Size(bytes.get()) : 0;
    if (size > std::numeric_limits<int>::max()) {
        return {};
    }
    QString text(static_cast<int>(size / 2), Qt::Uninitialized);
    if (size > 0) {
        std::memcpy(text.data(), api().PyBytes_AsString(bytes.get()), static_cast<std::size_t>(size));
    }
    const base::Length zero = text.indexOf(QChar(QChar::Null));
    return zero < 0 ? text : text.left(zero);
}

QString fromStr(PyObject* o)
{
    const PendingErrorKeeper keeper;
    const PythonRef bytes(api().PyUnicode_AsUTF8String(o));
    if (bytes) {
        return fromUtf8(api().PyBytes_AsString(bytes.get()));
    }
    api().PyErr_Clear();
    return fromUtf16(o);
}

} // namespace

QString PyStringToQString(PyObject* o)
{
    if (!o) {
        return {};
    }
    if (api().isInstance(o, Py_TPFLAGS_UNICODE_SUBCLASS)) {
        return fromStr(o);
    }
    return api().isInstance(o, Py_TPFLAGS_BYTES_SUBCLASS) ? QString::fromLatin1(api().PyBytes_AsString(o))
                                                          : QString();
}

QString PyObjectToRepr(PyObject* o)
{
    const PendingErrorKeeper keeper;
    const PythonRef text(api().PyObject_Repr(o));
    return PyStringToQString(text.get());
}

QString PyObjectToStr(PyObject* o)
{
    const PendingErrorKeeper keeper;
    const PythonRef text(api().PyObject_Str(o));
    return PyStringToQString(text.get());
}

PyObject* QStringToPyString(const QString& s)
{
    const std::wstring wide = toWideText(s);
    return api().PyUnicode_FromWideChar(wide.data(), static_cast<Py_ssize_t>(wide.size()));
}

} // namespace veltor::python
