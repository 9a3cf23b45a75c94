#include "input.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QProcess>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void giveUp(const QString &text)
{
    std::fprintf(stderr, "orva-bench: %s\n", qUtf8Printable(text));
    std::exit(1);
}

} // namespace

QString cacheFolder()
{
    return qEnvironmentVariable("ORVA_BENCH_CACHE", QStringLiteral(ORVA_BENCH_CACHE));
}

int logMegabytes()
{
    constexpr int usual = 100;
    const int wanted = qEnvironmentVariableIntValue("ORVA_BENCH_MB");
    return wanted > 0 ? wanted : usual;
}

QString cachedLog(const QString &name, const QStringList &options, int megabytes, const QString &suffix)
{
    QString path = QStringLiteral("%1/%2-%3MB.%4").arg(cacheFolder(), name).arg(megabytes).arg(suffix);
    if (QFileInfo::exists(path))
        return path;
    const QString unfinished = path + QStringLiteral(".part");
    const qint64 size = qint64{1000000} * megabytes;
    const QStringList arguments = QStringList{unfinished, QStringLiteral("--size"), QString::number(size)} + options;
    if (!QDir().mkpath(cacheFolder()) || QProcess::execute(QStringLiteral(ORVA_BENCH_GENERATOR), arguments) != 0 ||
        !QFile::rename(unfinished, path))
        giveUp(QStringLiteral("cannot make %1").arg(path));
    return path;
}

QString cachedSingleLap(const QString &path)
{
    QString copy = QString(path).replace(QLatin1String(".csv"), QLatin1String("-single.csv"));
    if (QFileInfo::exists(copy))
        return copy;
    const QString unfinished = copy + QStringLiteral(".part");
    QFile::remove(unfinished);
    QFile file(unfinished);
    const QByteArray title = "Lap Dist Pct";
    constexpr qint64 headRoom = 4096; // the title is one of the first
    if (!QFile::copy(path, unfinished) || !file.open(QIODevice::ReadWrite))
        giveUp(QStringLiteral("cannot make %1").arg(copy));
    const qsizetype position = file.read(headRoom).indexOf(title);
    if (position < 0 || !file.seek(position) || file.write("Way") != 3 || !file.rename(copy))
        giveUp(QStringLiteral("cannot make %1").arg(copy));
    return copy;
}
