#pragma once

// What several tests need: tables of rows, comparison of samples by their bits, and files for the length of a test.

#include "promises.h"
#include "sdk/channel.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <span>
#include <vector>

namespace Testing {

using namespace Qt::StringLiterals;

/// Whether the memory of the process is ours alone: sanitizers and emulators have theirs in it.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(ORVA_EMULATED)
constexpr bool isMemoryOurs = false;
#elif defined(__has_feature)
constexpr bool isMemoryOurs = !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer);
#else
constexpr bool isMemoryOurs = true;
#endif

/// The columns of a data-driven test. It is called for each row, with the row's name and cells.
template <typename... Cells>
class Table
{
public:
    template <typename... Names>
    explicit Table(Names... names)
    {
        (QTest::addColumn<Cells>(names), ...);
    }
    void operator()(const char *name, const Cells &...cells) const { (QTest::newRow(name) << ... << cells); }
};

/// Whether @p actual is @p expected, bit by bit; says in the log where it is not.
inline bool sameSamples(std::span<const double> actual, const std::vector<double> &expected)
{
    bool same = actual.size() == expected.size();
    if (!same)
        qWarning("%zu samples, expected %zu", actual.size(), expected.size());
    for (std::size_t i = 0; same && i < expected.size(); ++i) {
        same = sameBits(actual[i], expected[i]);
        if (!same)
            qWarning("sample %zu is %.17g, expected %.17g", i, actual[i], expected[i]);
    }
    return same;
}

/// Whether recorded channel @p name of @p lap holds exactly @p expected.
inline bool sameSamples(const KOV::SDK::Lap &lap, const char *name, const std::vector<double> &expected)
{
    const auto channel = lap.channel(QString::fromUtf8(name));
    if (!channel)
        qWarning("no channel \"%s\"", name);
    return channel && sameSamples(channel->samples(), expected);
}

/// A directory of files that goes with the test.
class Files
{
public:
    /// Writes @p content to a file @p name and returns its path.
    QString write(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write a test file");
        return file.fileName();
    }
    QString path(const QString &name) const { return directory.filePath(name); }

private:
    QTemporaryDir directory;
};

} // namespace Testing
