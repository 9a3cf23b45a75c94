#pragma once

// What several tests need: comparison of doubles by their bits, and files for the length of a test.

#include "sdk/channel.h"
#include "sdk/lap.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <bit>
#include <span>
#include <vector>

namespace Testing {

/// Whether a sanitizer keeps books on memory, which then says nothing about ours.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#elif defined(__has_feature)
constexpr bool isSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool isSanitized = false;
#endif

/// QCOMPARE on doubles is approximate and finds two NaNs different; this is neither.
inline bool sameBits(double a, double b)
{
    return std::bit_cast<quint64>(a) == std::bit_cast<quint64>(b);
}

/// Whether @p channel holds exactly @p expected, bit by bit; says in the log where it does not.
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
