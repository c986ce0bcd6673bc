// Crash files as values: every byte of them may be somebody's invention.

#include "CrashReportParser.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace veltor::utils {
namespace {

constexpr int knownFormat = 1;
constexpr int maxFrames = 1024;
constexpr int maxBuildIdDigits = 128;

/// Takes members of one object, and notes when one does not fit.
class Members
{
public:
    explicit Members(const QJsonObject& object)
        : m_object(object)
    {}

    /// "" when it is missing.
    QString text(const char* name)
    {
        const QJsonValue value = m_object.value(QLatin1String(name));
        m_good = m_good && (value.isString() || value.isUndefined());
        return value.toString();
    }

    /// "0x1f"; 0 when it is missing.
    quint64 hex(const char* name)
    {
        const QString digits = text(name);
        if (digits.isEmpty()) {
            return 0;
        }
        bool right = false;
        const quint64 number = digits.toULongLong(&right, 16);
        m_good = m_good && right && digits.startsWith(QLatin1String("0x"));
        return number;
    }

    /// A whole number that a double holds.
    qint64 integer(const char* name)
    {
        const double number = m_object.value(QLatin1String(name)).toDouble(-0.5);
        const bool right = qAbs(number) < 9007199254740992.0 && number == static_cast<double>(qint64(number));
        m_good = m_good && right;
        return right ? qint64(number) : 0;
    }

    QByteArray bytes(const char* name)
    {
        const QByteArray digits = text(name).toLatin1();
        QByteArray bytes = QByteArray::fromHex(digits.left(maxBuildIdDigits));
        m_good = m_good && bytes.toHex() == digits;
        return bytes;
    }

    void require(bool condition) { m_good = m_good && condition; }
    [[nodiscard]] bool isGood() const { return m_good; }

private:
    QJsonObject m_object;
    bool m_good = true;
};

bool readFrame(const QJsonValue& value, CrashFrame& frame)
{
    Members members(value.toObject());
    members.require(value.toObject().contains(QLatin1String("address")));
    frame.address = members.hex("address");
    frame.module = members.text("module");
    frame.offset = members.hex("offset");
    frame.loadAddress = members.hex("loadAddress");
    frame.buildId = members.bytes("buildId");
    members.require(frame.module.isEmpty() || frame.loadAddress + frame.offset == frame.address);
    return members.isGood();
}

} // namespace

std::optional<CrashReport> parseCrashReport(const QByteArray& bytes, QString& reason)
{
    QJsonParseError fault = {};
    const QJsonObject object = QJsonDocument::fromJson(bytes, &fault).object();
    if (fault.error != QJsonParseError::NoError) {
        reason = fault.errorString();
        return {};
    }
    CrashReport report;
    Members members(object);
    members.require(members.integer("crash") == knownFormat);
    report.time = QDateTime::fromString(members.text("time"), Qt::ISODate).toUTC();
    members.require(report.time.isValid());
    report.application = members.text("application");
    report.version = members.text("version");
    report.library = members.text("library");
    const qint64 signal = members.integer("signal");
    members.require(signal > 0 && signal < 1024);
    report.signal = static_cast<int>(signal);
    report.signalName = members.text("signalName");
    report.code = members.integer("code");
    report.address = members.hex("address");
    report.process = members.integer("process");
    report.thread = members.integer("thread");
    report.threadName = members.text("threadName");
    const QJsonArray frames = object.value(QLatin1String("frames")).toArray();
    members.require(object.value(QLatin1String("frames")).isArray() && frames.size() <= maxFrames);
    if (members.isGood()) {
        for (const QJsonValue& value : frames) {
            CrashFrame frame;
            members.require(readFrame(value, frame));
            report.frames << frame;
        }
    }
    if (!members.isGood()) {
        reason = QCoreApplication::translate("CrashReport", "это не отчёт о сбое");
        return {};
    }
    return report;
}

} // namespace veltor::utils
