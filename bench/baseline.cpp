#include "baseline.h"

#include "ld/ldfile.h"

#include <QtCore/QDataStream>
#include <QtCore/QFile>
#include <QtCore/QTextStream>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace Baseline {

namespace {

using Columns = std::vector<std::vector<double>>;

constexpr std::size_t blockBytes = std::size_t{256} * 1024;
constexpr double lapCutFall = 75.0; // percent
constexpr std::array powersOfTen{1.0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
const QLatin1String distanceTitle("Lap Dist Pct");

struct FileCloser
{
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// The lines of a file, with their line feeds; a last line without one is lost.
class Lines
{
public:
    explicit Lines(const QString &path)
        : file(std::fopen(QFile::encodeName(path).constData(), "rb"))
        , buffer(blockBytes)
    {
    }

    const char *next()
    {
        for (;;) {
            const void *const newline = std::memchr(buffer.data() + begin, '\n', end - begin);
            if (newline) {
                const char *const line = buffer.data() + begin;
                begin = static_cast<std::size_t>(static_cast<const char *>(newline) - buffer.data()) + 1;
                return line;
            }
            std::memmove(buffer.data(), buffer.data() + begin, end - begin);
            end -= begin;
            begin = 0;
            const std::size_t count = std::fread(buffer.data() + end, 1, buffer.size() - end, file.get());
            if (count == 0)
                return nullptr;
            end += count;
        }
    }

private:
    File file;
    std::vector<char> buffer;
    std::size_t begin = 0;
    std::size_t end = 0;
};

bool isDigit(char c)
{
    return static_cast<unsigned char>(c - '0') < 10;
}

// Reads the number at `text` and moves `text` past it.
double readNumber(const char *&text)
{
    const bool isNegative = *text == '-';
    text += isNegative;
    quint64 digits = 0;
    std::size_t fractionDigits = 0;
    while (isDigit(*text))
        digits = digits * 10 + static_cast<quint64>(*text++ - '0');
    if (*text == '.') {
        const char *const fraction = ++text;
        while (isDigit(*text))
            digits = digits * 10 + static_cast<quint64>(*text++ - '0');
        fractionDigits = static_cast<std::size_t>(text - fraction);
    }
    const double value = static_cast<double>(digits) / powersOfTen[fractionDigits];
    return isNegative ? -value : value;
}

template <typename T>
void widen(const char *bytes, std::size_t count, double *output)
{
    for (std::size_t i = 0; i < count; ++i) {
        T sample{};
        std::memcpy(&sample, bytes + i * sizeof(T), sizeof(T));
        output[i] = static_cast<double>(sample);
    }
}

} // namespace

qint64 readCsv(const QString &path, Stopwatch *watch)
{
    Lines lines(path);
    while (*lines.next() != '\n') {
    }
    const char *titles = lines.next();
    std::size_t distanceColumn = 0;
    for (const char *title = titles; *title != '\n'; ++title) {
        if (std::strncmp(title, distanceTitle.data(), static_cast<std::size_t>(distanceTitle.size())) == 0)
            break;
        distanceColumn += *title == ',';
    }
    lines.next();
    lines.next();

    std::vector<Columns> laps(1);
    double lastDistance = 0.0;
    qint64 fields = 0;
    while (const char *text = lines.next()) {
        std::size_t column = 0;
        Columns *lap = &laps.back();
        for (;; ++text) {
            const double value = readNumber(text);
            if (column == distanceColumn) {
                if (lastDistance - value > lapCutFall) {
                    // The fields before this one belong to the new lap, too.
                    Columns next(lap->size());
                    for (std::size_t i = 0; i < column; ++i) {
                        next[i].push_back((*lap)[i].back());
                        (*lap)[i].pop_back();
                    }
                    laps.push_back(std::move(next));
                    lap = &laps.back();
                }
                lastDistance = value;
            }
            if (lap->size() <= column)
                lap->emplace_back();
            (*lap)[column++].push_back(value);
            if (*text != ',')
                break;
        }
        fields += static_cast<qint64>(column);
    }
    watch->stop();
    return fields;
}

qint64 readCsvWithQt(const QString &path, Stopwatch *watch)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    QTextStream stream(&file);
    while (!stream.readLine().isEmpty()) {
    }
    const qsizetype distanceColumn = stream.readLine().split(u',').indexOf(distanceTitle);
    stream.readLine();
    stream.readLine();
    std::vector<Columns> laps(1);
    double lastDistance = 0.0;
    qint64 fields = 0;
    QString line;
    while (stream.readLineInto(&line)) {
        const QList<QString> texts = line.split(u',');
        if (distanceColumn >= 0 && distanceColumn < texts.size()) {
            const double distance = texts[distanceColumn].toDouble();
            if (lastDistance - distance > lapCutFall)
                laps.emplace_back();
            lastDistance = distance;
        }
        Columns &lap = laps.back();
        lap.resize(static_cast<std::size_t>(texts.size()));
        for (qsizetype i = 0; i < texts.size(); ++i)
            lap[static_cast<std::size_t>(i)].push_back(texts[i].toDouble());
        fields += texts.size();
    }
    watch->stop();
    return fields;
}

qint64 walkLines(const QString &path, Stopwatch *watch)
{
    Lines lines(path);
    qint64 count = 0;
    while (lines.next())
        ++count;
    watch->stop();
    return count;
}

qint64 copyLd(const QString &path, Stopwatch *watch)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return 0;
    QDataStream stream(&file);
    LdData data = readLd(stream);
    std::vector<std::unique_ptr<double[]>> channels; // NOLINT(modernize-avoid-c-arrays)
    std::vector<char> block(blockBytes);
    qint64 samples = 0;
    for (const LdChannelHeader &header : readLdChannelHeaders(stream, data)) {
        const std::size_t count = header.sampleCount;
        const std::size_t width = header.sampleWidth;
        double *const output = channels.emplace_back(std::make_unique_for_overwrite<double[]>(count)).get(); // NOLINT
        file.seek(header.dataOffset);
        for (std::size_t done = 0; done < count;) {
            const std::size_t some = std::min(count - done, blockBytes / width);
            const std::size_t bytes = some * width;
            file.read(block.data(), static_cast<qint64>(bytes));
            if (width == sizeof(qint16))
                widen<qint16>(block.data(), some, output + done);
            else
                widen<qint32>(block.data(), some, output + done);
            done += some;
        }
        samples += static_cast<qint64>(count);
    }
    watch->stop();
    return samples;
}

double toDouble(std::string_view text)
{
    const char *at = text.data();
    return readNumber(at);
}

} // namespace Baseline
