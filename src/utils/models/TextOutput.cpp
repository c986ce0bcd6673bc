// Encodes text and hands it over to a device.
#include "utils/models/TextOutput.h"

#include <QTextCodec>
#include <QtCore/QCoreApplication>
#include <QtCore/QFileDevice>

#include <algorithm>

namespace veltor::utils {
namespace {

constexpr int much = 1 << 16;            // characters
constexpr qint64 largestQueue = 1 << 20; // of bytes that a socket or a process has not taken yet
constexpr qint64 largestPiece = 1 << 20; // characters of a field however long
constexpr int longestWaitMs = 30000;

QString nameOf(const QIODevice& device)
{
    const auto* const file = qobject_cast<const QFileDevice*>(&device);
    if (file && !file->fileName().isEmpty()) {
        return file->fileName();
    }
    return device.objectName().isEmpty() ? QString::fromLatin1(device.metaObject()->className())
                                         : device.objectName();
}

} // namespace

struct TextOutput::Encoder
{
    QTextCodec& codec;
    QTextCodec::ConverterState state = QTextCodec::ConverterState(QTextCodec::IgnoreHeader);
};

TextOutput::TextOutput(QIODevice& device, QTextCodec& codec)
    : m_device(device)
    , m_encoder(new Encoder{codec})
    , m_textMode(device.isTextModeEnabled())
{
    m_text.reserve(much + much / 4);
    if (m_textMode) {
        m_device.setTextModeEnabled(false);
    }
    if (!m_device.isOpen() || !m_device.isWritable()) {
        m_error = QCoreApplication::translate("veltor::utils::ItemModelExport", "'%1' не открыт для записи")
                      .arg(nameOf(device));
    }
}

TextOutput::~TextOutput()
{
    if (m_textMode) {
        m_device.setTextModeEnabled(true);
    }
}

bool TextOutput::flushMuch()
{
    if (m_text.size() >= much) {
        flush();
    }
    return m_error.isEmpty();
}

void TextOutput::flush()
{
    auto& state = m_encoder->state;
    const QChar* next = m_text.constData();
    for (qint64 left = m_text.size(); left > 0 && m_error.isEmpty();) {
        const int piece = static_cast<int>(std::min<qint64>(left, largestPiece));
        const QByteArray bytes = m_encoder->codec.fromUnicode(next, piece, &state);
        m_replaced += state.invalidChars;
        state.invalidChars = 0;
        write(bytes.constData(), bytes.size());
        next += piece;
        left -= piece;
    }
    m_text.resize(0); // keeps its memory
    drain(largestQueue);
}

void TextOutput::write(const char* bytes, qint64 size)
{
    while (size > 0 && m_error.isEmpty()) {
        const qint64 taken = m_device.write(bytes, size);
        if (taken <= 0 || taken > size) {
            return fail();
        }
        bytes += taken;
        size -= taken;
    }
}

/// Waits until a device that takes bytes in the background has no more than that left.
void TextOutput::drain(qint64 most)
{
    while (m_error.isEmpty() && m_device.isSequential() && m_device.bytesToWrite() > most) {
        if (!m_device.waitForBytesWritten(longestWaitMs)) {
            fail();
        }
    }
}

bool TextOutput::finish()
{
    if (m_error.isEmpty()) {
        flush();
        drain(0);
    }
    auto* const file = qobject_cast<QFileDevice*>(&m_device);
    if (m_error.isEmpty() && file && !file->flush()) {
        fail();
    }
    return m_error.isEmpty();
}

void TextOutput::fail()
{
    m_error = QCoreApplication::translate("veltor::utils::ItemModelExport", "Не удалось записать '%1': %2")
                  .arg(nameOf(m_device), m_device.errorString());
}

} // namespace veltor::utils
