#pragma once

// Arguments that several commands have, and arguments of Qt's types for the command-line parser.

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>
#include <string>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace Host {

/// The arguments of every command about logs.
struct LogArguments
{
    QStringList paths; ///< as given, at least one
    bool isJson = false;
    bool isQuiet = false;
};

/// Adds LOG... and --quiet.
void addLogs(CLI::App &app, LogArguments &arguments);
/// Adds --json besides.
void addLogArguments(CLI::App &app, LogArguments &arguments);

/// Further arguments of commands that import logs.
struct ImportArguments
{
    QString pluginPath; ///< empty: look for the library's own
    bool isStrict = false;
};

/// Adds --plugin and --strict.
void addImportArguments(CLI::App &app, ImportArguments &arguments);

/// Adds an option without a value.
CLI::Option *addFlag(CLI::App &app, const std::string &names, bool &target, const std::string &help);

/// Which laps to show, for commands that can also show the file itself.
struct LapArguments
{
    std::optional<qsizetype> lap; ///< index of the one lap to show
    bool isStored = false;        ///< show what the file holds instead of laps
};

/// Adds --lap N and --stored, of which one excludes the other.
void addLapArguments(CLI::App &app, LapArguments &arguments);

/// Adds --lap N, the index of a lap.
CLI::Option *addLap(CLI::App &app, std::optional<qsizetype> &lap, const std::string &help);

/// The index of a lap that @p option was given as @p text. Throws Failure with ExitStatus::BadCommandLine.
qsizetype lapIndex(const QString &text, const QString &option);

/// Adds an option with a text as its value, refused if it is empty. @p valueName is what the help calls the value.
CLI::Option *addText(CLI::App &app, const std::string &names, const std::string &valueName, QString &target,
                     const std::string &help);

/// Adds an option, which may be repeated, with names as its value, see splitNames.
CLI::Option *addNames(CLI::App &app, const std::string &names, const std::string &valueName, QStringList &target,
                      const std::string &help);

/// Splits what @p option was given at its commas. A name that contains a comma is in double quotes, with double quotes
/// in it doubled, just as in the header row that "values" prints. Throws Failure with ExitStatus::BadCommandLine where
/// a quote is not closed.
QStringList splitNames(const QString &text, const QString &option);

} // namespace Host
