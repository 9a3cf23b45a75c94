// orva-samples: makes telemetry logs of a simulated drive, for the samples of this project, its tests and timings.

#include "csvexport.h"
#include "ldexport.h"
#include "sidecar.h"

#include "inspect/blockwriter.h"
#include "inspect/sidecarwriter.h"
#include "ld/ldx.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QMap>

#include <cstdio>
#include <functional>
#include <limits>

using namespace samples;

namespace {

constexpr int failed = 1;
constexpr int badOptions = 2;
constexpr int highestRate = 1000; // samples per second
constexpr int maxLaps = 100000;

int complain(const QString &text, int status)
{
    std::fprintf(stderr, "orva-samples: %s\n", qUtf8Printable(text));
    return status;
}

QCommandLineOption option(const char *name, const QString &description, const char *valueName, const char *preset)
{
    return {QLatin1String(name), description, QLatin1String(valueName), QLatin1String(preset)};
}

// The value of an option as a whole number within bounds; the first bad one is kept in error.
qint64 number(const QCommandLineParser &parser, const char *name, qint64 minimum, qint64 maximum, QString *error)
{
    bool isNumber = false;
    const QString text = parser.value(QLatin1String(name));
    const qint64 value = text.toLongLong(&isNumber);
    if ((!isNumber || value < minimum || value > maximum) && error->isEmpty()) {
        *error = QStringLiteral("--%1 is \"%4\", expected a whole number from %2 to %3")
                     .arg(QLatin1String(name), QString::number(minimum), QString::number(maximum), text);
    }
    return value;
}

// What the value of an option stands for; the first unknown one is kept in error.
template <typename T>
T choice(const QCommandLineParser &parser, const char *name, const QMap<QString, T> &choices, QString *error)
{
    const QString text = parser.value(QLatin1String(name));
    if (!choices.contains(text) && error->isEmpty()) {
        *error = QStringLiteral("--%1 is \"%3\", expected one of: %2")
                     .arg(QLatin1String(name), choices.keys().join(QLatin1String(", ")), text);
    }
    return choices.value(text);
}

// Lets fill write the file at path; it returns false for a log that is too large for its format.
bool writeFile(const QString &path, qint64 limitBytes, QString *error,
               const std::function<bool(Inspect::BlockWriter &)> &fill)
{
    QFile device(path);
    const bool isOpen = device.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    Inspect::BlockWriter file(device, limitBytes);
    if (isOpen && !fill(file)) {
        *error = QStringLiteral("a .ld log cannot be larger than 4 GiB");
        return false;
    }
    if (!isOpen || !file.flush()) {
        *error = QStringLiteral("cannot write %1: %2").arg(path, isOpen ? file.errorText() : device.errorString());
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Makes a telemetry log of a simulated drive. The same options make the same bytes everywhere."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The log to write."));
    parser.addOptions({
        option("format", QStringLiteral("csv or ld."), "FORMAT", "csv"),
        option("style",
               QStringLiteral(
                   "How text is written: plain, tools (all quoted, decimal commas) or points (quoted, points)."),
               "STYLE", "plain"),
        option("track", QStringLiteral("club (laps of forty seconds) or kart (twelve seconds)."), "TRACK", "club"),
        option("seed", QStringLiteral("Another number, another drive."), "N", "1"),
        option("rate", QStringLiteral("Rows per second of text; the channels of a .ld log have their own rates."), "N",
               "60"),
        option("laps", QStringLiteral("Full laps between the out lap and the one that is cut off."), "N", "5"),
        option("start", QStringLiteral("Where on the out lap the log begins, in percent of a lap."), "PERCENT", "0"),
        option("columns", QStringLiteral("Channels, from 10 to 2000; 0 takes those that the car has."), "N", "0"),
        option("size", QStringLiteral("As many laps as make a log of about this size; overrides --laps."), "BYTES",
               "0"),
        option("cut", QStringLiteral("Stop in mid-row after this many bytes, as if the power had failed."), "BYTES",
               "0"),
        option("session", QStringLiteral("The session's word in sidecar and head."), "WORD", "Practice"),
        {QStringLiteral("beacons"), QStringLiteral("Text only: a row of beacon markers in place of the lap channels.")},
        {QStringLiteral("sidecar"), QStringLiteral("Write the .ldx beside the log, too.")},
    });
    parser.process(application);

    const QMap<QString, CsvStyle> styles = {{QStringLiteral("plain"), CsvStyle::Plain},
                                            {QStringLiteral("tools"), CsvStyle::Tools},
                                            {QStringLiteral("points"), CsvStyle::Points}};
    const QMap<QString, Track (*)()> tracks = {{QStringLiteral("club"), &Track::club},
                                               {QStringLiteral("kart"), &Track::kart}};
    const QMap<QString, bool> formats = {{QStringLiteral("csv"), false}, {QStringLiteral("ld"), true}};
    constexpr qint64 anySize = std::numeric_limits<qint64>::max() / 1000;
    QString error;
    const CsvStyle style = choice(parser, "style", styles, &error);
    const bool isBinary = choice(parser, "format", formats, &error);
    Track (*const makeTrack)() = choice(parser, "track", tracks, &error);
    const qint64 seed = number(parser, "seed", 0, std::numeric_limits<qint32>::max(), &error);
    const auto rate = static_cast<int>(number(parser, "rate", 1, highestRate, &error));
    const auto laps = static_cast<int>(number(parser, "laps", 0, maxLaps, &error));
    const qint64 start = number(parser, "start", 0, 99, &error);
    const auto columns = static_cast<int>(number(parser, "columns", 0, maxChannels, &error));
    const qint64 size = number(parser, "size", 0, anySize, &error);
    const qint64 cut = number(parser, "cut", 0, anySize, &error);
    if (error.isEmpty() && columns > 0 && columns < minChannels)
        error = QStringLiteral("--columns is below %1, the number that every log has").arg(minChannels);
    if (error.isEmpty() && parser.positionalArguments().size() != 1)
        error = QStringLiteral("name one FILE to write (see orva-samples --help)");
    if (!error.isEmpty())
        return complain(error, badOptions);

    DriveSettings settings;
    settings.seed = static_cast<quint64>(seed);
    settings.track = makeTrack();
    settings.laps = laps;
    settings.startFraction = static_cast<double>(start) / 100.0;
    LogInfo info;
    info.venue = settings.track.name;
    info.session = parser.value(QStringLiteral("session")).toUtf8();
    Drive drive(settings);

    const QString path = parser.positionalArguments().constFirst();
    const bool isWritten = writeFile(path, cut, &error, [&](Inspect::BlockWriter &file) {
        if (isBinary) {
            const std::vector<Channel> channels = loggerChannels(settings.seed, columns);
            if (size > 0)
                drive.setSampleCount(ldSamplesForSize(channels, rate, size), rate);
            return writeLd(file, drive, channels, info);
        }
        std::vector<Channel> channels = csvColumns(settings.seed, columns, style);
        if (parser.isSet(QStringLiteral("beacons")))
            std::erase_if(channels, isLapChannel);
        if (size > 0)
            drive.setSampleCount(csvRowsForSize(drive, channels, rate, style, size), rate);
        if (parser.isSet(QStringLiteral("beacons")))
            info.lineCrossings = drive.lineCrossings();
        writeCsv(file, drive, channels, info, rate, style);
        return true;
    });
    const bool isSidecarWritten =
        isWritten && (!parser.isSet(QStringLiteral("sidecar")) ||
                      writeFile(sidecarPath(path), 0, &error, [&](Inspect::BlockWriter &file) {
                          file.write(Inspect::sidecarText(sidecarItems(info)));
                          return true;
                      }));
    return isSidecarWritten ? 0 : complain(error, failed);
}
