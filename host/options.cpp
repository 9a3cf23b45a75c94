#include "host/options.h"

#include "host/failure.h"

#include <QtCore/QCommandLineOption>
#include <QtCore/QCommandLineParser>

namespace Host {

namespace {

/// The options with their help texts, known to the parser from its construction on.
class Parser : public QCommandLineParser
{
public:
    Parser()
    {
        setApplicationDescription(
            QStringLiteral("Reads a telemetry log (a comma-separated text export or a binary .ld log) through the\n"
                           "import library and prints its laps."));
        addOptions({channels, lap, names, setup, json, plugin, quiet, help, version});
        addPositionalArgument(QStringLiteral("LOG"), QStringLiteral("The log to read."), QStringLiteral("LOG"));
    }

    const QCommandLineOption channels{QStringLiteral("channels"),
                                      QStringLiteral("List the channels of a lap instead of the laps.")};
    const QCommandLineOption lap{
        QStringLiteral("lap"),
        QStringLiteral("Show the lap with index N (from 0) only. Without it, --channels and --values show the best "
                       "lap, or the longest where no lap has a time."),
        QStringLiteral("N")};
    const QCommandLineOption names{
        QStringLiteral("values"),
        QStringLiteral("Print the samples of these channels as comma-separated text, or add them to --json. "
                       "Put a name that holds a comma in double quotes."),
        QStringLiteral("NAME,...")};
    const QCommandLineOption setup{QStringLiteral("setup"),
                                   QStringLiteral("List the setup values of the .ldx file beside the log.")};
    const QCommandLineOption json{QStringLiteral("json"),
                                  QStringLiteral("Print laps, channels and setup values as one JSON object instead.")};
    const QCommandLineOption plugin{QStringLiteral("plugin"),
                                    QStringLiteral("Load this import plug-in instead of the one that comes along."),
                                    QStringLiteral("FILE")};
    const QCommandLineOption quiet{{QStringLiteral("q"), QStringLiteral("quiet")},
                                   QStringLiteral("Do not print the plug-in's messages and other remarks.")};
    const QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Print this help and exit.")};
    const QCommandLineOption version{{QStringLiteral("v"), QStringLiteral("version")},
                                     QStringLiteral("Print the version and exit.")};
};

[[noreturn]] void refuse(const QString &text)
{
    throw Failure(text + QLatin1String(" (see --help)"), ExitStatus::BadOptions);
}

Options::View viewOf(const Parser &parser)
{
    if (parser.isSet(parser.help))
        return Options::View::Help;
    if (parser.isSet(parser.version))
        return Options::View::Version;
    if (parser.isSet(parser.json))
        return Options::View::Json;
    const bool channels = parser.isSet(parser.channels);
    const bool values = parser.isSet(parser.names);
    const bool setup = parser.isSet(parser.setup);
    if (int(channels) + int(values) + int(setup) > 1)
        refuse(QStringLiteral("--channels, --values and --setup do not go together, except with --json"));
    return channels ? Options::View::ChannelList
           : values ? Options::View::Values
           : setup  ? Options::View::Setup
                    : Options::View::LapTable;
}

} // namespace

Options parseOptions(const QStringList &arguments)
{
    Parser parser;
    if (!parser.parse(arguments)) {
        QString problem = parser.errorText();
        if (problem.endsWith(u'.'))
            problem.chop(1);
        refuse(problem);
    }
    Options options;
    options.view = viewOf(parser);
    if (options.view == Options::View::Help || options.view == Options::View::Version)
        return options;

    const QStringList logs = parser.positionalArguments();
    if (logs.isEmpty())
        refuse(QStringLiteral("no log given"));
    if (logs.size() > 1)
        refuse(QStringLiteral("%1 logs given, expected one").arg(logs.size()));
    options.logPath = logs.first();
    if (parser.isSet(parser.plugin)) {
        options.pluginPath = parser.value(parser.plugin);
        if (options.pluginPath.isEmpty())
            refuse(QStringLiteral("--plugin is empty, expected a file"));
    }
    options.isQuiet = parser.isSet(parser.quiet);
    if (parser.isSet(parser.lap)) {
        bool isNumber = false;
        const QString text = parser.value(parser.lap);
        const qlonglong index = text.toLongLong(&isNumber);
        if (!isNumber || index < 0)
            refuse(QStringLiteral("--lap is \"%1\", expected the index of a lap: 0, 1, 2, ...").arg(text));
        options.lap = index;
    }
    for (const QString &names : parser.values(parser.names))
        options.valueNames += splitNames(names);
    return options;
}

QString helpText()
{
    return Parser().helpText();
}

QStringList splitNames(const QString &text)
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
        refuse(QStringLiteral("--values is '%1', expected a double quote behind the last name, as one stands before it")
                   .arg(text));
    names.append(name);
    return names;
}

} // namespace Host
