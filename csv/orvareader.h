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

class ColumnPlan;
class LineReader;

/// Reader of one comma-separated export: header rows, channel names, units, data rows.
///
/// Made for one import and used on one thread. Laps are cut where the lap distance falls by more than three quarters of
/// a lap; lap times are found in the lap that follows.
class ORVAReader : public QObject
{
    Q_OBJECT

public:
    explicit ORVAReader(QObject *parent);

    /// Reads the export at @p path and the .ldx sidecar that has its base name (up to the first dot) beside it.
    ///
    /// A path that is missing, cannot be opened or is no regular file (a pipe could block and a device never end) gives
    /// an empty list; a file without data rows one lap without channels. What is no number reads as 0.0, a field that a
    /// short row lacks as invalidValue, and fields behind the last channel name are dropped.
    ///
    /// Rows of uneven length are padded and laps of few rows hold little, so both cost more memory than their text.
    /// That is allowed up to 8 Mi samples of padding and 4 more a byte of the file, and up to 512 Ki channels and
    /// sidecar values over all laps and one more for every 8 bytes, where a lap counts as three more. Where a file asks
    /// for more, reading ends as at its end, and the laps up to there are returned.
    QList<QSharedPointer<KOV::SDK::Lap>> importLaps(const QString &path);

    /// Repairs the channel "lapcurrentlaptime" of @p lap by its "lapdistpct"; without both nothing happens.
    static void fixLapTime(KOV::SDK::Lap *lap);

Q_SIGNALS:
    /// Once an import, at its end.
    void message(const QString &string, int verbose);

private:
    bool readPreamble(LineReader &lines, ColumnPlan *plan);
    void readRows(LineReader &lines, const ColumnPlan &plan, qint64 fileSize, qint64 valuesPerLap);
    void enterRow(const ColumnPlan &plan, std::span<const double> numbers);
    long long expectedRows(long long rowsOfFile) const;
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

    KOV::SDK::Sample sample; // the data row in hand
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
