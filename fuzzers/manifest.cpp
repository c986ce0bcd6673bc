// Any bytes as a transaction's manifest: read without a crash, and what is accepted leads nowhere but beneath
// a folder, gives no number and no name twice, and reads back from its own records.

#include "Fuzz.h"

#include "utils/storage/journal/Manifest.h"

#include <set>

namespace {

using namespace veltor::utils::journal;

void demand(bool holds)
{
    veltor::fuzz::demand(holds, "a manifest is safe");
}

void checkPlan(const NameMap::Plan& plan)
{
    std::set<QString> targets;
    std::set<quint32> numbers;
    for (const auto& [name, number] : plan.aside) {
        demand(isNameBeneath(name) && number != 0 && numbers.insert(number).second);
    }
    for (const NameMap::Move& move : plan.moves) {
        demand(isNameBeneath(move.to) && targets.insert(move.to).second);
        demand(move.from.hidden != 0 || isNameBeneath(move.from.name));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const QByteArray text(reinterpret_cast<const char*>(bytes), static_cast<int>(size));
    // As it stands, and as records whose checksums are made right.
    QByteArray records = manifestHead();
    for (int at = 0; at + 12 <= text.size(); at += 12) {
        const auto byte = [&](int index) { return static_cast<quint8>(text[at + index]); };
        const NameRecord record{static_cast<NameRecord::Kind>(1 + byte(0) % 5), byte(1), byte(2),
                                QString::fromLatin1(text.mid(at + 3, byte(3) % 4)),
                                QString::fromLatin1(text.mid(at + 7, byte(7) % 4))};
        records += encodeRecord(record);
    }
    for (const QByteArray& candidate : {text, records}) {
        const std::optional<Manifest> manifest = Manifest::parse(candidate);
        if (!manifest) {
            continue;
        }
        demand(manifest->size <= candidate.size() && (!manifest->moved || manifest->sealed));
        checkPlan(manifest->names.plan());
        QByteArray again = manifest->records.empty() ? QByteArray() : manifestHead();
        for (const NameRecord& record : manifest->records) {
            again += encodeRecord(record);
        }
        demand(Manifest::parse(again) && Manifest::parse(again)->records.size() == manifest->records.size());
    }
    return 0;
}
