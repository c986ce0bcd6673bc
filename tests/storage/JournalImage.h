#pragma once

#include "support/Table.h"
#include "support/Text.h"

#include <veltor/utils/RollbackDevice.h>

#include <QtCore/QBuffer>
#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QRegularExpression>
#include <QtCore/QtEndian>

#include <tuple>
#include <vector>

namespace veltor::test {

/// The journal of data/journal.txt: the files "a" (100 bytes, blocks A1 and A2) and "b" (50 bytes, block B1),
/// and two free records F1 and F2.
class JournalImage
{
public:
    explicit JournalImage(bool checksums = true)
        : bytes(QByteArray::fromHex(checksums ? "5898C29F3116AB4480895FEB8D81855A"
                                              : "9BCF4F45F9BDCE459C1A195DA13490A1"))
    {
        std::vector<std::tuple<int, QString>> fields;
        auto end = static_cast<quint64>(bytes.size());
        for (const QStringList& row : readTable("storage/data/journal.txt", '|')) {
            const QString name = row[0].trimmed();
            const QString record = name.section(QLatin1Char('.'), 0, 0);
            if (checksums || !name.endsWith(u(".checksum"))) {
                m_places.insert(record, m_places.value(record, end));
                m_places.insert(name, end);
                fields.emplace_back(row[1].toInt(), row[2].trimmed());
                end += row[1].toULongLong();
            }
        }
        for (const auto& [size, value] : fields) { // now that all places are known
            const bool isText = value.startsWith(QLatin1Char('"'));
            bytes += isText ? value.mid(1, size).toUtf8() : QByteArray(size, '\0');
            if (!isText) {
                put(static_cast<quint64>(bytes.size() - size), at(value), size);
            }
        }
    }

    /// The place of a record or of a field ("a", "A1.previous", "firstFile", "end"), plus a number if one
    /// is added ("A1+40"), or a number by itself.
    quint64 at(const QString& expression) const
    {
        quint64 sum = 0;
        for (const QString& term : expression.split(QLatin1Char('+'))) {
            const auto end = static_cast<quint64>(bytes.size());
            sum += term == u("end") ? end : m_places.value(term, term.toULongLong());
        }
        return sum;
    }

    /// Damages the image by a list of words: "PLACE=VALUE" writes 8 bytes, "PLACE:N=VALUE" N of them,
    /// "cut=PLACE" ends the journal there.
    void damage(const QString& words)
    {
        for (const QString& word : words.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            const QStringList sides = word.split(QLatin1Char('='));
            const QStringList target = sides[0].split(QLatin1Char(':'));
            const quint64 value = at(sides[1]);
            if (target[0] == QLatin1String("cut")) {
                bytes.truncate(static_cast<int>(value));
            } else {
                put(at(target[0]), value, target.value(1, QStringLiteral("8")).toInt());
            }
        }
    }

    /// A message in which {PLACE} stands for the number.
    QString message(QString text) const
    {
        const QRegularExpression place(QStringLiteral(R"(\{([a-zA-Z][\w.+]*)\})"));
        for (auto match = place.match(text); match.hasMatch(); match = place.match(text)) {
            text.replace(match.capturedStart(), match.capturedLength(),
                         QString::number(at(match.captured(1))));
        }
        return text;
    }

    QByteArray bytes;

private:
    void put(quint64 offset, quint64 value, int size)
    {
        char little[8];
        qToLittleEndian(value, little);
        bytes.replace(static_cast<int>(offset), size, little, size);
    }

    QMap<QString, quint64> m_places;
};

/// A rollback device on a journal in memory; every file of the journal opens as a buffer of its own,
/// but for those named in `missing`.
class MemoryDevice : public utils::RollbackDevice
{
public:
    bool openImage(const QByteArray& bytes, QIODevice::OpenMode mode = QIODevice::ReadOnly)
    {
        auto* const buffer = new QBuffer;
        buffer->setData(bytes);
        buffer->open(QIODevice::ReadWrite);
        return open(makeIOPtr(buffer), mode);
    }

    QByteArray journal() const { return static_cast<QBuffer*>(journalDevice().get())->data(); }

    using RollbackDevice::addFileImpl;
    using RollbackDevice::existingFile;

    QStringList missing;
    int removed = 0;

protected:
    IOPtr openFile(const QString& name) const override
    {
        auto* const buffer = new QBuffer;
        if (!missing.contains(name)) {
            buffer->setData(QByteArray(100, '.'));
            buffer->open(QIODevice::ReadWrite);
        }
        return makeIOPtr(buffer);
    }
    void remove(const IOPtr&) override { ++removed; }
};

} // namespace veltor::test
