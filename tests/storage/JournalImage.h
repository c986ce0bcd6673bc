#pragma once

#include <veltor/utils/RollbackDevice.h>

#include <QtCore/QBuffer>
#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QRegularExpression>
#include <QtCore/QtEndian>

namespace veltor::test {

/// A journal put together byte by byte, independently of the code under test: the files "a" (100 bytes,
/// blocks A1 and A2) and "b" (50 bytes, block B1), and two free records F1 and F2.
class JournalImage
{
public:
    explicit JournalImage(bool checksums = true)
        : m_headSize(checksums ? 40 : 36)
    {
        bytes = QByteArray::fromHex(checksums ? "5898C29F3116AB4480895FEB8D81855A"
                                              : "9BCF4F45F9BDCE459C1A195DA13490A1");
        bytes += QByteArray(32, '\0');
        addFile("a", 100);
        addBlock("A1", "a", 0, 10, 100, "saved bytes one", 0x654E1E42);
        addFile("b", 50);
        addBlock("A2", "a", at("A1"), 40, 100, "", 0);
        addBlock("B1", "b", 0, 0, 50, "b", 0xD280B0C4);
        addFree("F1", 0, 60);
        addFree("F2", at("F1"), 64);
    }

    /// The place of a record or of a field ("a", "A1.previous", "firstFile", "end"), plus a number if one
    /// is added ("A1+40"), or a number by itself.
    quint64 at(const QString& expression) const
    {
        static const QMap<QString, quint64> fields{
            {QStringLiteral("next"), 0},        {QStringLiteral("first"), 8},
            {QStringLiteral("previous"), 8},    {QStringLiteral("last"), 16},
            {QStringLiteral("position"), 16},   {QStringLiteral("region"), 16},
            {QStringLiteral("bound"), 24},      {QStringLiteral("size"), 24},
            {QStringLiteral("nameLength"), 32}, {QStringLiteral("name"), 34},
            {QStringLiteral("length"), 36},     {QStringLiteral("firstFile"), 16},
            {QStringLiteral("lastFile"), 24},   {QStringLiteral("firstFree"), 32},
            {QStringLiteral("lastFree"), 40}};
        quint64 sum = 0;
        for (const QString& term : expression.split(QRegularExpression(QStringLiteral("[.+]")))) {
            bool number = false;
            const quint64 value = term.toULongLong(&number);
            sum += number                         ? value
                   : term == QLatin1String("end") ? static_cast<quint64>(bytes.size())
                                                  : m_records.value(term, fields.value(term));
        }
        return sum;
    }
    quint64 at(const char* expression) const { return at(QString::fromLatin1(expression)); }

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

    /// Appends a record of fields (value, size), links it and remembers its place.
    void append(const char* name, const QString& link, const QString& end,
                std::initializer_list<std::pair<quint64, int>> fields)
    {
        const quint64 record = static_cast<quint64>(bytes.size());
        put(at(link), record, 8);
        put(at(end), record, 8);
        for (const auto& [value, size] : fields) {
            bytes += QByteArray(size, '\0');
            put(static_cast<quint64>(bytes.size() - size), value, size);
        }
        m_records[QString::fromLatin1(name)] = record;
    }

    void addFile(const char* name, quint64 size)
    {
        const QString link = QLatin1String(m_records.isEmpty() ? "firstFile" : "a.next");
        append(name, link, QStringLiteral("lastFile"),
               {{0, 8}, {0, 8}, {0, 8}, {size, 8}, {qstrlen(name), 2}});
        bytes += name;
    }

    void addBlock(const char* name, const char* file, quint64 previous, quint64 from, quint64 bound,
                  const QByteArray& data, quint64 checksum)
    {
        const QString entry = QString::fromLatin1(file);
        append(name, previous == 0 ? entry + QLatin1String(".first") : QString::number(previous),
               entry + QLatin1String(".last"),
               {{0, 8},
                {previous, 8},
                {from, 8},
                {bound, 8},
                {checksum, m_headSize - 36},
                {static_cast<quint64>(data.size()), 4}});
        bytes += data;
    }

    void addFree(const char* name, quint64 previous, quint64 region)
    {
        append(name, previous == 0 ? QStringLiteral("firstFree") : QString::number(previous),
               QStringLiteral("lastFree"), {{0, 8}, {previous, 8}, {region, 8}, {4, 4}});
    }

    int m_headSize;
    QMap<QString, quint64> m_records;
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
