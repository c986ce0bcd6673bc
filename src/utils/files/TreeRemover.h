#pragma once

#include "platform/Directory.h"
#include "utils/files/TreeCursor.h"

#include <veltor/utils/TreeRemoval.h>

#include <optional>

namespace veltor::utils {

/// Deletes what is in a folder and writes the report; see removeTree().
class TreeRemover
{
public:
    TreeRemover(RemovalReport& report, const RemovalProgress& progress)
        : m_report(report)
        , m_progress(progress)
    {}

    /// Deletes all that is in a folder but the file named @p keep.
    /// @param shown  the folder's path in the report
    /// @return whether nothing else is left
    bool empty(platform::Directory folder, const QString& shown, const platform::NativeString& keep = {});

    /// Deletes a folder by its name in @p base, after what is in it.
    void remove(platform::Directory& base, const platform::NativeString& name, const QString& shown);

    void fail(const QString& path, const QString& reason);

private:
    /// What is known of a folder on the way.
    struct Level
    {
        bool keeps = false; // something in it stays
        int passes = 0;
    };

    bool walk(const platform::NativeString& keep);
    void takeEntry();
    void takeFolder(bool again, int attempt = 0);
    void takeLeft();
    void failHere(const QString& reason);
    bool goesOn();

    RemovalReport& m_report;
    const RemovalProgress& m_progress;
    TreeCursor* m_cursor = nullptr;
    QString m_shown;
    std::vector<Level> m_levels;
    int m_untold = 0; // names since the progress was told
};

} // namespace veltor::utils
