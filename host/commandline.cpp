#include "host/commandline.h"

#include "host/output.h"

#include <QtCore/QFileInfo>

#include <CLI/CLI.hpp>

#include <algorithm>

namespace Host {

namespace {

constexpr std::size_t optionColumn = 24; // where the texts of the options begin

class HelpFormatter : public CLI::Formatter
{
public:
    HelpFormatter()
    {
        column_width(optionColumn);
        label("OPTIONS", "options");
        label("Positionals", "Arguments");
    }

    std::string make_usage(const CLI::App *app, std::string name) const override
    {
        if (app->get_parent())
            return '\n' + CLI::Formatter::make_usage(app, name);
        return "\nUsage: " + name + " [options] LOG...\n   or: " + name + " COMMAND [options] LOG...\n";
    }

    std::string make_option_opts(const CLI::Option *option) const override
    {
        // Not which options exclude each other: their texts say that in words.
        if (!option->get_option_text().empty())
            return ' ' + option->get_option_text();
        return option->get_type_size() == 0 ? std::string() : ' ' + option->get_type_name();
    }

    std::string make_option_name(const CLI::Option *option, bool isPositional) const override
    {
        std::string name = CLI::Formatter::make_option_name(option, isPositional);
        if (const auto comma = name.find(','); comma != std::string::npos)
            name.insert(comma + 1, " "); // "-h, --help", which the manual page is made from
        return name;
    }
};

std::string footer(const CommandHelp &help)
{
    std::string text = help.example.find('\n') == std::string::npos ? "Example:\n  " : "Examples:\n  ";
    for (const char character : help.example) {
        text += character;
        if (character == '\n')
            text += "  ";
    }
    return text;
}

void declareProgram(CLI::App &app)
{
    app.name("orva-host");
    app.description("Reads telemetry logs, comma-separated text exports (.csv) and binary logs (.ld),\n"
                    "and prints what they hold.");
    app.formatter(std::make_shared<HelpFormatter>());
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", "orva-host " ORVA_VERSION, "Print the version and exit");
    app.allow_windows_style_options(false); // a path may begin with a slash on any system
    // Also keeps a log that is named like a command from ending the arguments of the first command.
    app.require_subcommand(1);
    app.footer("Without a command, the laps are listed. \"orva-host COMMAND --help\" explains a\n"
               "command.\n"
               "\n"
               "Exit status: 0 success, 1 something cannot be read or written, 2 the command\n"
               "line is wrong, 3 something about a log is amiss.");
}

void declareCommand(CLI::App &app, Command &command)
{
    const CommandHelp &help = command.help();
    CLI::App *sub = app.add_subcommand(help.name, help.summary);
    sub->group("Commands");
    sub->footer(footer(help));
    sub->set_help_flag("-h,--help", "Print this help and exit");
    sub->allow_extras(); // refused below, in words of our own
    command.declare(*sub);
}

// @p words as the parser takes them rightly. It would read "[a,b]" as a list of arguments and "++" as the end of a
// command, although files may be called so, and after "--" it takes no more arguments than it needs.
QStringList guardedWords(const QStringList &words)
{
    QStringList guarded;
    bool isAfterOptions = false;
    for (const QString &word : words) {
        const bool isSpecial = (word.startsWith(u'[') && word.endsWith(u']')) || word == QLatin1String("++");
        if (!isAfterOptions && word == QLatin1String("--"))
            isAfterOptions = true;
        else if ((isAfterOptions && word.startsWith(u'-')) || (isSpecial && QFileInfo::exists(word)))
            guarded.append(QLatin1String("./") + word);
        else
            guarded.append(word);
    }
    return guarded;
}

[[noreturn]] void refuse(const QString &text, const QString &command = {})
{
    throw Failure(QStringLiteral("%1 (see orva-host %2--help)").arg(text, command), ExitStatus::BadCommandLine);
}

// What the parser says of an option ("--lap: 1 required N missing") in words for people.
QString problem(const CLI::ParseError &error)
{
    const QString text = QString::fromLocal8Bit(error.what());
    if (text == QLatin1String("LOG is required"))
        return QStringLiteral("no log given");
    if (text.contains(QLatin1String(" excludes ")))
        return QString(text).replace(QLatin1String(" excludes "), QLatin1String(" does not go together with "));
    const QString option = text.section(QLatin1String(": "), 0, 0);
    if (text.contains(QLatin1String(" required ")) && text.endsWith(QLatin1String(" missing")))
        return option + QLatin1String(" needs a value");
    if (text.contains(QLatin1String("at most 1 "), Qt::CaseInsensitive))
        return option + QLatin1String(" is given more than once");
    if (text.endsWith(QLatin1String("a disallowed flag override")))
        return QLatin1String("--") + text.section(u' ', 0, 0) + QLatin1String(" takes no value");
    return text.simplified();
}

// Refuses the first word that the parser could not place.
void refuseRest(const CLI::App &app, const QString &command)
{
    for (const CLI::App *parsed : app.get_subcommands()) {
        if (const auto rest = parsed->remaining(); !rest.empty())
            refuse((rest.front().starts_with('-') ? QStringLiteral("unknown option %1")
                                                  : QStringLiteral("more than one log given: %1"))
                       .arg(QString::fromStdString(rest.front())),
                   command);
    }
}

} // namespace

Command *readCommandLine(const QStringList &arguments, const CommandList &commands, Output &output)
{
    CLI::App app;
    declareProgram(app);
    for (const auto &command : commands)
        declareCommand(app, *command);

    QStringList words = arguments.sliced(1);
    const auto find = [&commands](const QString &name) {
        return std::find_if(commands.begin(), commands.end(),
                            [&name](const auto &command) { return command->help().name == name.toStdString(); });
    };
    if (words.isEmpty())
        refuse(QStringLiteral("no log given"));
    if (const QStringList own{QStringLiteral("-h"), QStringLiteral("--help"), QStringLiteral("--version")};
        find(words.first()) == commands.end() && !own.contains(words.first())) {
        for (const QString &word : std::as_const(words)) {
            if (find(word) != commands.end())
                refuse(
                    QStringLiteral("\"%1\" is a command and comes first; write ./%1 for a log of that name").arg(word));
        }
        words.prepend(QString::fromStdString(commands.front()->help().name));
    }

    try {
        std::vector<std::string> reversed; // as the parser wants them
        for (const QString &word : guardedWords(words))
            reversed.insert(reversed.begin(), word.toStdString());
        app.parse(std::move(reversed));
    } catch (const CLI::CallForHelp &) {
        for (CLI::App *parsed : app.get_subcommands())
            parsed->description((*find(words.first()))->help().description); // says more than its line in the list
        output.writeText(QString::fromStdString(app.help()));
        return nullptr;
    } catch (const CLI::CallForVersion &) {
        output.writeText(QString::fromStdString(app.version()) + u'\n');
        return nullptr;
    } catch (const CLI::ParseError &error) {
        refuseRest(app, words.first() + u' '); // a log that is missing may be due to a mistyped option
        refuse(problem(error), words.first() + u' ');
    } catch (const Failure &failure) { // of an argument's value
        refuse(failure.text(), words.first() + u' ');
    }
    refuseRest(app, words.first() + u' ');
    return find(words.first())->get();
}

} // namespace Host
