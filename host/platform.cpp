#include "host/platform.h"

#include <QtCore/QFile>
#include <QtCore/QtGlobal>

#ifdef Q_OS_WIN
#include <cstdio>
#include <fcntl.h>
#include <io.h>
#else
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace Host {

#ifdef Q_OS_WIN

void holdStandardStreams()
{
    (void)_setmode(_fileno(stdout), _O_BINARY); // line feeds on every system
}

void ignoreBrokenPipes() {}

bool isOutputTerminal()
{
    return _isatty(_fileno(stdout)) != 0;
}

bool isErrorTerminal()
{
    return _isatty(_fileno(stderr)) != 0;
}

bool isInClosedFolder(const QString & /*path*/)
{
    return false;
}

#else

void holdStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1)
            (void)open("/dev/null", O_RDONLY); // takes the lowest free place, and refuses what is written
    }
}

void ignoreBrokenPipes()
{
    std::signal(SIGPIPE, SIG_IGN);
}

bool isOutputTerminal()
{
    return isatty(STDOUT_FILENO) == 1;
}

bool isErrorTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

bool isInClosedFolder(const QString &path)
{
    return access(QFile::encodeName(path).constData(), F_OK) != 0 && errno == EACCES;
}

#endif

} // namespace Host
