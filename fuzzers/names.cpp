// Any text as a file's name: made safe, it stays as it is when made so again; a name and its suffix are the
// name.

#include "Fuzz.h"

#include <veltor/utils/FileNames.h>

using namespace veltor::utils;
using veltor::fuzz::demand;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    std::string_view rest = veltor::fuzz::textOf(bytes, size);
    const QString suffix = veltor::fuzz::decoded(veltor::fuzz::takeLine(rest)).left(30);
    const QString name = veltor::fuzz::decoded(rest);
    demand(withoutFileSuffix(name) + dottedFileSuffix(name) == name, "a suffix is a part of the name", name);
    demand(dottedFileSuffix(name).mid(1) == fileSuffix(name), "a dot begins the suffix", name);
    const QString added = addedFileSuffix(name, suffix);
    demand(added == name || added.size() > name.size(), "a suffix is added", added);
    for (const int longest : {0, 20, 21, 60, 255}) {
        SafeNameRules rules;
        rules.longestBytes = longest;
        rules.replacement = suffix.isEmpty() ? QLatin1Char('_') : suffix[0];
        const QString safe = safeFileName(name, rules);
        demand(!safe.isEmpty() && safe != QLatin1String(".") && safe != QLatin1String(".."),
               "there is a name");
        demand(safe.toUtf8().size() <= qMax(longest, 20), "a name is not too long", safe);
        demand(safeFileName(safe, rules) == safe, "a safe name stays as it is",
               name + QLatin1Char('|') + safe + QLatin1Char('|') + safeFileName(safe, rules));
        demand(!isReservedFileName(safe) && !safe.contains(QLatin1Char('/')), "a name is a file's everywhere",
               safe);
    }
    return 0;
}
