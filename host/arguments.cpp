#include "host/arguments.h"

#include "host/failure.h"

#include <CLI/CLI.hpp>

#include <utility>

namespace Host {

namespace {

[[noreturn]] void refuse(const QString &text)
{
    throw Failure(text, ExitStatus::BadCommandLine);
}

// What messages call the option that is declared as @p names: "--channels" for "-c,--channels".
QString spokenName(const std::string &names)
{
    return QString::fromStdString(names).section(u',', -1);
}

} // namespace

void addLogs(CLI::App &app, LogArguments &arguments)
{
    app.add_option_function<std::vector<std::string>>(
           "LOG",
           [&arguments](const std::vector<std::string> &paths) {
               for (const std::string &path : paths)
                   arguments.paths.append(QString::fromStdString(path));
           },
           "One or more telemetry logs")
        ->option_text(" ")
        ->required();
    addFlag(app, "-q,--quiet", arguments.isQuiet, "Do not print remarks and the plug-in's messages");
}

void addLogArguments(CLI::App &app, LogArguments &arguments)
{
    addLogs(app, arguments);
    addFlag(app, "--json", arguments.isJson, "Print one JSON object per log, each on one line");
}

void addImportArguments(CLI::App &app, ImportArguments &arguments)
{
    addFlag(app, "--strict", arguments.isStrict, "Exit with status 3 if there is a remark about a log");
    addText(app, "--plugin", "FILE", arguments.pluginPath, "Load this import plug-in instead of orva's own");
}

CLI::Option *addFlag(CLI::App &app, const std::string &names, bool &target, const std::string &help)
{
    return app.add_flag(names, target, help)->disable_flag_override(); // no "--json=3"
}

CLI::Option *addLap(CLI::App &app, std::optional<qsizetype> &lap, const std::string &help)
{
    return app
        .add_option_function<std::string>(
            "--lap",
            [&lap](const std::string &value) {
                lap = lapIndex(QString::fromStdString(value), QStringLiteral("--lap"));
            },
            help)
        ->type_name("N");
}

void addLapArguments(CLI::App &app, LapArguments &arguments)
{
    CLI::Option *lap = addLap(app, arguments.lap,
                              "Show the lap with index N, counted from 0, instead of\n"
                              "the best lap or, if no lap has a time, the longest;\n"
                              "--json shows all laps unless told otherwise");
    addFlag(app, "--stored", arguments.isStored,
            "Show what the file itself holds, at its own rates,\n"
            "instead of a lap; the default for a log without laps")
        ->excludes(lap);
}

qsizetype lapIndex(const QString &text, const QString &option)
{
    bool isNumber = false;
    const qlonglong index = text.toLongLong(&isNumber);
    if (!isNumber || index < 0 || !std::in_range<qsizetype>(index))
        refuse(QStringLiteral("%1 is \"%2\", expected the index of a lap: 0, 1, 2, ...").arg(option, text));
    return static_cast<qsizetype>(index);
}

CLI::Option *addText(CLI::App &app, const std::string &names, const std::string &valueName, QString &target,
                     const std::string &help)
{
    return app
        .add_option_function<std::string>(
            names,
            [&target, names, valueName](const std::string &text) {
                if (text.empty())
                    refuse(QStringLiteral("%1 is empty, expected %2")
                               .arg(spokenName(names), QString::fromStdString(valueName)));
                target = QString::fromStdString(text);
            },
            help)
        ->type_name(valueName);
}

CLI::Option *addNames(CLI::App &app, const std::string &names, const std::string &valueName, QStringList &target,
                      const std::string &help)
{
    return app
        .add_option_function<std::vector<std::string>>(
            names,
            [&target, names](const std::vector<std::string> &texts) {
                for (const std::string &text : texts)
                    target += splitNames(QString::fromStdString(text), spokenName(names));
            },
            help)
        ->option_text(valueName)
        ->allow_extra_args(false); // one value each time that the option is given
}

QStringList splitNames(const QString &text, const QString &option)
{
    QStringList names;
    QString name;
    bool isQuoted = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        if (character == u'"' && isQuoted && i + 1 < text.size() && text[i + 1] == u'"') {
            name += text[++i];
        } else if (character == u'"' && (isQuoted || name.isEmpty())) {
            isQuoted = !isQuoted;
        } else if (character == u',' && !isQuoted) {
            names.append(name);
            name.clear();
        } else {
            name += character;
        }
    }
    if (isQuoted)
        refuse(QStringLiteral("unterminated double quote in %1 '%2'").arg(option, text));
    names.append(name);
    return names;
}

} // namespace Host
