#pragma once

// What each command of the program is: a name, its texts, its options, and what it does. A command is a pair of files
// that offers one function, which makes it; commands.cpp lists them.

#include "host/failure.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
}

namespace Host {

class Output;

/// The texts of a command's help, as they are printed: lines of at most 80 characters.
struct CommandHelp
{
    std::string name;
    std::string summary;     ///< one line for the list of commands: an imperative, no full stop
    std::string description; ///< a few sentences
    std::string example;     ///< one or more command lines, each below "Example:" on a line of its own
};

class Command
{
public:
    explicit Command(CommandHelp texts)
        : texts(std::move(texts))
    {
    }
    virtual ~Command() = default;
    Command(const Command &) = delete;
    Command &operator=(const Command &) = delete;

    const CommandHelp &help() const { return texts; }

    /// Adds the options and arguments to @p app, bound to members of this object (arguments.h has what is common).
    virtual void declare(CLI::App &app) = 0;

    /// Does the work, once the command line has been read. Throws Failure.
    virtual ExitStatus run(Output &output) = 0;

private:
    CommandHelp texts;
};

using CommandList = std::vector<std::unique_ptr<Command>>;

} // namespace Host
