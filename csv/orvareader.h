#pragma once

// Turns one text export into laps. Where laps begin and end is decided here.

#include "sdk/lap.h"
#include "sdk/sample.h"
#include "sdk/session.h"

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <span>

namespace Csv {
class ColumnPlan;
class LineReader;
} // namespace Csv

/// Reader of one comma-separated export: header rows, channel names, units, data rows.
///
/// Made for one import and used on one thread. Laps are cut where the lap distance falls by more than three quarters of
/// a lap; the time of a lap is found in the next one.
class ORVAReader : public QObject
{
    Q_OBJECT

public:
    explicit ORVAReader(QObject *parent);

    /// Reads the export at @p path and the .ldx sidecar that has its base name (up to the first dot) beside it.
    ///
    /// A path that is missing, cannot be opened or is not a regular file (a pipe could block and a device never end)
    /// gives an empty list; a file without data rows gives one lap without channels. A field that is not a number reads
    /// as 0.0, a field that a short row lacks as invalidValue, and fields after the last channel name are dropped.
    ///
    /// Padding, channels and sidecar values may take 512 MiB, and 32 bytes more per byte of the file. Where a file
    /// needs more, reading ends as if the file ended there, and the laps read so far are returned.
    QList<QSharedPointer<KOV::SDK::Lap>> importLaps(const QString &path);

    /// Repairs the channel "lapcurrentlaptime" of @p lap by its "lapdistpct"; without both nothing happens.
    static void fixLapTime(KOV::SDK::Lap *lap);

Q_SIGNALS:
    /// Once per import, at its end.
    void message(const QString &string, int verbose);

private:
    bool readPreamble(Csv::LineReader &lines, Csv::ColumnPlan *plan);
    void readRows(Csv::LineReader &lines, const Csv::ColumnPlan &plan, qint64 fileSize, qint64 valuesPerLap);
    void enterRow(const Csv::ColumnPlan &plan, std::span<const double> numbers);
    long long expectedRows(const Csv::LineReader &line, const Csv::ColumnPlan &plan, qint64 fileSize) const;
    void processHeader(const QString &line);
    void startStint();
    void startLap();
    double sampledLapDistance() const;
    bool isLapCut(double lapDistance) const;
    void processData();
    void processLap(bool completed);
    void preprocessLap();
    void releaseSpareRoom();
    void setLapTimes();

    KOV::SDK::Sample sample; // the current data row
    KOV::SDK::Lap lap;       // the lap being filled
    QList<QSharedPointer<KOV::SDK::Lap>> laps;
    QString vehicle;
    QString driver;
    QString venue;
    KOV::SDK::Session session = KOV::SDK::Session::UnknownSession;
    double lastLapDistPct = 0.0;
    qint32 lapCounter = -1;
    bool decimate = false;
};
