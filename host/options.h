#pragma once

// The command line: what the options are called, what they mean together, what is wrong with them.

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace Host {

struct Options
{
    /// What is printed. All but Help and Version need a log.
    enum class View
    {
        LapTable,
        ChannelList,
        Values,
        Setup,
        Json,
        Help,
        Version
    };

    View view = View::LapTable;
    QString logPath;
    QString pluginPath;           ///< empty: look for the library's own
    std::optional<qsizetype> lap; ///< index of the one lap to show
    QStringList valueNames;       ///< channels whose samples are printed
    bool isQuiet = false;
};

/// Reads @p arguments, the program's name first. Throws Failure with ExitStatus::BadOptions.
Options parseOptions(const QStringList &arguments);

/// What --help prints.
QString helpText();

/// Splits what --values was given at its commas. A name that holds a comma stands in double quotes, with double quotes
/// in it doubled, just as in the header row that --values prints. Throws Failure with ExitStatus::BadOptions where a
/// quote is not closed.
QStringList splitNames(const QString &text);

} // namespace Host
