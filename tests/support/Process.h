#pragma once

// Other processes: programs run to their end, and this program anew in a role.

#include <QtCore/QProcess>
#include <QtCore/QStringList>

#include <string>

namespace veltor::test {

struct Outcome
{
    int status; ///< exit code, -1 after a crash
    std::string output, errors;
};

/// The words that start a program: those of the emulator, where programs of this build need one, and the
/// program. One named without its folder is the machine's own.
QStringList commandOf(const QString& program);

/// Runs a program to its end.
Outcome run(const QString& program, const QStringList& arguments, const QByteArray& input = {});

/// A part that this program plays when it is started by Actor or play(); defined once, at namespace scope.
struct Role
{
    Role(const char* name, int (*play)(const QStringList& arguments));
};

/// In a role: tells the process that started this one.
void sayReady();

/// This program as another process, killed at the end if it is still there.
class Actor : public QProcess
{
public:
    Actor(const char* role, const QStringList& arguments);
    ~Actor() override;

    /// Waits until it said so, or has ended.
    bool isReady();
    /// Kills it a random time after now; true when it was still alive then.
    bool killWithin(int longestUs);
    int result();
};

/// Plays a role in another process.
Outcome play(const char* role, const QStringList& arguments = {});

/// In main(): the exit code of the role that the command line names, -1 when it names none.
int playedRole();

} // namespace veltor::test
