// Where the laps of a log begin and what its driving channels hold, from what channels and marks say of them. Samples
// come once per second.

#include "inspect/lapplan.h"
#include "inspect/rewriteerror.h"
#include "testing.h"

#include <cmath>

using namespace Inspect;
using namespace Testing;

namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();

using Samples = std::vector<double>;

struct Said
{
    LapRole role;
    Samples samples;
    double scale = 1.0;
    bool isMapped = false; // with its scale
    bool isExact = false;
};

LapChannelSurvey survey(const Said &said)
{
    LapChannel channel;
    channel.role = said.role;
    channel.title = u"C"_s;
    channel.scale = said.scale;
    channel.isMapped = channel.isScaleGiven = said.isMapped;
    channel.isExact = said.isExact;
    LapChannelSurvey result(channel);
    double time = 0.0;
    for (const double sample : said.samples)
        result.add(time++, sample);
    return result;
}

// @p count numbers from @p first on, @p step apart.
Samples run(double first, double step, int count)
{
    Samples samples;
    for (int i = 0; i < count; ++i)
        samples.push_back(first + i * step);
    return samples;
}

Samples operator+(Samples one, const Samples &other)
{
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

QString text(double number)
{
    return QString::number(std::round(number * 1e6) / 1e6);
}

// What the driving channels follow from (a channel sample by sample, a channel's laps, the laps, nothing), and for each
// of the times: lap number, last lap time in the milliseconds that the import reads, lap time, position.
QString outline(LapPlan &plan, const Samples &times)
{
    QString sources;
    for (const LapRole role : {LapRole::Position, LapRole::LapNumber, LapRole::CurrentLapTime, LapRole::LastLapTime})
        sources += plan.source(role).kind == DrivingSource::Kind::Channel ? u'c'
                   : !plan.isWritten(role)                                ? u'-'
                   : plan.source(role).column                             ? u'f'
                                                                          : u'l';
    QStringList rows{sources};
    for (const double time : times)
        rows.append(u"%1 %2 %3 %4"_s.arg(plan.lapNumber(time))
                        .arg(std::trunc(plan.lastLapTime(time) * 1000.0))
                        .arg(text(plan.currentLapTime(time)), text(plan.position(time))));
    if (plan.closingTime())
        rows.append(u"closed at "_s + text(*plan.closingTime()));
    return (rows + plan.remarks()).join(u"; "_s);
}

} // namespace

class TestLapPlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // "sample time/line" of each lap that a channel sees.
    void events_data()
    {
        const Table<LapRole, Samples, double, QString> row("role", "samples", "scale", "expected");
        row("fall of a fraction", LapRole::Position, {0.7, 0.9, 0.3, 0.5, 0.9, 0.05}, 1.0, u"5/4.66667"_s);
        row("fall of percents", LapRole::Position, {80, 97, 1, 0, 99, 24.5, 98, 22}, 1.0, u"2/1.75 7/6.08333"_s);
        row("beyond the line", LapRole::Position, {50, 102, 1, 30, 50, 70, 110, -3}, 1.0, u"2/1 7/7"_s);
        row("counter", LapRole::LapNumber, {1, 2, 3, none, 3, 3, 3, 3.6, 2, 2, 2, 2, 2.2, 4}, 1.0, u"1/1 7/7 13/13"_s);
        row("beacon", LapRole::Beacon, {0, 0, 1, 0, 0, 0, 0, 0.4, 1, 1, 1, 1, 1, 0, 0, 0}, 1.0, u"2/2 8/8 13/13"_s);
        row("begins within a pulse", LapRole::Beacon, {1, 0, 0, 0, 0, 0, 1}, 1.0, u"6/6"_s);
        row("pulse with an echo", LapRole::Beacon, {0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0}, 1.0, u"1/1"_s);
        row("restarts of a time", LapRole::CurrentLapTime, {7, 8, 0.25, 8, 2, 7, 8, 5, 12, 3.5}, 1.0, u"2/1.75 9/9"_s);
        row("restarts in milliseconds", LapRole::CurrentLapTime, {7000, 8000, 250}, 0.001, u"2/1.75"_s);
        row("restarts of a distance", LapRole::LapDistance, {40, 50, 4, 14, 24, 34, 44, 30, 15}, 1.0, u"2/1.6 8/7"_s);
        row("a distance that crept", LapRole::LapDistance, {49, 50, 4}, 1.0, u"2/1"_s);
        row("nothing", LapRole::LogDistance, {40, 50, 4}, 1.0, {});
    }
    void events()
    {
        QFETCH(LapRole, role);
        QFETCH(Samples, samples);
        QFETCH(double, scale);
        QStringList found;
        const LapChannelSurvey heard = survey({role, samples, scale});
        for (const LapEvent &event : heard.events().list())
            found.append(text(event.sampleTime) + u'/' + text(event.lineTime));
        QTEST(found.join(u' '), "expected");
    }

    // The factor to percent.
    void positionScales_data()
    {
        const Table<Samples, QString> row("samples", "expected");
        row("fraction", {0.0, 1.02}, u"100"_s);
        row("percent", {-49.0, 149.0}, u"1"_s);
        row("constant", {50.0, 50.0}, u"none"_s);
        row("metres", {0.0, 2000.0}, u"none"_s);
        row("far below zero", {-51.0, 40.0}, u"none"_s);
    }
    void positionScales()
    {
        QFETCH(Samples, samples);
        const auto scale = survey({LapRole::Position, samples}).percentScale();
        QTEST(scale ? text(*scale) : u"none"_s, "expected");
    }

    // "role:column*scale" of each channel, the better ones first.
    void channels()
    {
        const QStringList titles{u"Lap Time"_s, u"pos"_s, u"Last Lap Time"_s, u"lap"_s, u"Pos"_s, u"Lap Number"_s};
        const QStringList units{u"ms"_s, {}, u"min"_s, {}, {}, {}};
        QString found;
        for (const LapChannel &channel : lapChannels(
                 titles, units, {{LapRole::Position, u"Pos"_s, 50.0}, {LapRole::LastLapTime, u"lap time"_s, {}}}))
            found += u"%1:%2*%3%4 "_s.arg(static_cast<int>(channel.role))
                         .arg(channel.column)
                         .arg(channel.scale)
                         .arg(channel.isExact ? u"!"_s : QString());
        QCOMPARE(found, u"0:4*50 3:0*0.001 1:5*1! 1:3*1 2:0*0.001 3:2*60 "_s);
    }

    // A channel that never stops changing marks no laps, and its memory stays bounded.
    void endlessChannels()
    {
        LapEvents events;
        HeldValue held(0.0);
        for (int i = 0; i <= 1000000; ++i) {
            if (i <= 100000)
                events.add({});
            held.add(i, i % 2);
        }
        QVERIFY(events.list().empty());
        QVERIFY(!held.at(5.0));
        Odometer odometer;
        for (int i = 0; i <= 3000000; ++i)
            odometer.add(i, i);
        QCOMPARE(odometer.at(2000000.25), 2000000.25);
    }

    void plans_data()
    {
        const Table<std::vector<Said>, LapMarks, double, Samples, QString> row("channels", "marks", "onlyLapEnd",
                                                                               "times", "expected");
        const auto marksAt = [](const Samples &seconds) { return LapMarks{u"M"_s, seconds}; };
        const LapMarks byUser{u"--laps-at"_s, {20, 40}};
        const auto add = [&](const char *name, const std::vector<Said> &channels, const LapMarks &marks,
                             const Samples &times,
                             const QString &expected) { row(name, channels, marks, 0.0, times, expected); };
        const LapMarks marks = marksAt({20, 40});
        const Samples dead(60, 0.0);
        const Samples way = run(0, 10, 10) + run(100, 20, 50);
        const Samples timer = run(5, 1, 20) + run(0.25, 1, 20) + run(0.25, 1, 20);
        const Samples position = run(0.25, 0.05, 15) + run(0, 0.05, 20) + run(0, 0.05, 20) + run(0, 0.05, 5);

        add("marks", {}, marks, {0, 10, 19.99999995, 20, 39, 59},
            u"llll; 0 0 1e-06 0; 0 0 10 50; 1 20000 1e-06 0; 1 20000 1e-06 0; 1 20000 19 95; 2 20000 19 95"_s);
        add("marks in the middle of laps", {}, marksAt({5, 20, 45, 55}), {0, 20, 58},
            u"llll; 0 0 1e-06 66.6667; 2 15000 1e-06 0; 4 10000 3 20"_s);
        add("one mark", {}, marksAt({40}), {0, 40, 59}, u"llll; 0 0 1e-06 0; 1 40000 1e-06 0; 1 40000 19 47.5"_s);
        add("a mark that is the start of the log", {}, marksAt({0, 20, 40}), {0, 20},
            u"llll; 0 0 1e-06 0; 1 20000 1e-06 0"_s);
        add("a mark at the first row", {}, marksAt({-0.4, 10, 40}), {0, 5, 10},
            u"llll; 0 0 0.4 0; 0 0 5.4 50; 1 10400 1e-06 0"_s);
        add("marks at the last row and just after it", {}, marksAt({20, 59, 60.5}), {20, 59, 60.5},
            u"llll; 1 20000 1e-06 0; 2 39000 1e-06 0; 3 1500 1e-06 0; closed at 60.5"_s);
        add("marks outside and too close", {}, marksAt({-9, 20, 20.9, 21, 40, 61}), {20, 21},
            u"llll; 1 20000 1e-06 0; 2 1000 1e-06 0; not used, as they lie outside the rows, which last from 0.000 to 59.000 s: 2 of the 6 marks of M; not used, as they come less than 1 s after another: 1 mark of M"_s);
        add("marks of the user", {{LapRole::LapNumber, run(3, 1, 60)}, {LapRole::LogDistance, way}}, byUser, {5, 20},
            u"llll; 0 0 5 37.5; 1 20000 1e-06 0"_s);
        add("marks of the user outside", {}, {byUser.origin, {20, 99}}, {},
            u"1 mark of --laps-at lies outside the rows, which last from 0.000 to 59.000 s"_s);
        add("marks of the user and a position", {{LapRole::Position, position, 100.0, true}}, byUser, {},
            u"both the given marks and \"C\" say where laps begin, expected one of them"_s);
        add("distance", {{LapRole::LapDistance, dead}, {LapRole::LogDistance, way}}, marksAt({5, 30, 50}), {0, 30, 59},
            u"llll; 0 0 1e-06 88.8889; 2 25000 1e-06 0; 3 20000 9 40"_s);
        add("distance within the lap",
            {{LapRole::LogDistance, way},
             {LapRole::LapDistance, run(100, 10, 20) + run(5, 10, 10) + run(95, 9, 10) + run(5, 20, 20)}},
            {}, {0, 20, 30, 31, 40, 59},
            u"llll; 0 0 1e-06 0; 1 19500 0.5 0; 1 19500 10.5 51.1364; 1 19500 11.5 56.25; 2 19944 0.555556 0; 2 19944 19.5556 100"_s);
        add("running time", {{LapRole::CurrentLapTime, timer}}, marks, {0, 20, 40},
            u"llfl; 0 0 5 0; 1 25000 0.25 0; 2 20000 0.25 0"_s);
        add("running time late for the line", {{LapRole::CurrentLapTime, run(5, 1, 20) + run(0.75, 1, 40)}}, marks,
            {0, 20, 40}, u"llfl; 0 0 5 0; 1 25000 1e-06 0; 2 20000 1e-06 0"_s);
        add("running time that stands still", {{LapRole::CurrentLapTime, Samples(15, 0.0) + run(15, 1, 45)}}, marks,
            {0, 20}, u"llll; 0 0 1e-06 0; 1 20000 1e-06 0"_s);
        add("running time of a position's laps",
            {{LapRole::Position, position},
             {LapRole::CurrentLapTime, run(5.25, 1, 15) + run(0.25, 1, 20) + run(0.25, 1, 20) + run(0.25, 1, 5)}},
            {}, {0, 15, 35}, u"clfl; 0 0 5.25 0; 1 20000 0.25 0; 2 20000 0.25 0"_s);
        add("counter", {{LapRole::LapNumber, Samples(22, 7.2) + Samples(38, 9.0)}}, marks, {0, 20, 40},
            u"lfll; 7 0 1e-06 0; 9 20000 1e-06 0; 9 20000 1e-06 0"_s);
        add("last lap time",
            {{LapRole::LastLapTime, dead},
             {LapRole::LastLapTime, Samples(22, 0.0) + Samples(20, 4.031) + Samples(14, 20.1) + Samples(4, 19.9)}},
            marks, {0, 20, 40}, u"lllf; 0 0 1e-06 0; 1 4031 1e-06 0; 2 19900 1e-06 0"_s);
        add("last lap time against the marks",
            {{LapRole::LastLapTime, Samples(22, 3.0) + Samples(20, 25.0) + Samples(18, 20.45)}},
            marksAt({-0.125, 20, 40}), {0, 20, 40},
            u"lllf; 0 3000 0.125 0; 1 20125 1e-06 0; 2 20450 1e-06 0; \"C\" differs from the time between the marks by more than 0.5 s in 1 lap; there the marks count"_s);
        add("last lap time below zero", {{LapRole::LastLapTime, Samples(42, -1.0) + Samples(18, 20.0)}}, marks,
            {0, 20, 40}, u"lllf; 0 0 1e-06 0; 1 0 1e-06 0; 2 20000 1e-06 0"_s);
        add("mapped position that never falls",
            {{LapRole::Position, run(0, 1, 60), 1.0, true}, {LapRole::LapNumber, Samples(30, 1.0) + Samples(30, 2.0)}},
            marks, {0, 59}, u"cf--; 1 0 1e-06 0; 1 0 59 0"_s);
        add("no position",
            {{LapRole::Position, run(0, 40, 30) + run(0, 40, 30)}, {LapRole::Position, run(0, 0.01, 60)}}, marks,
            {0, 20},
            u"llll; 0 0 1e-06 0; 1 20000 1e-06 0; \"C\" is not used: its range is not that of a position round the lap; \"C\" is not used: it never falls, though there are laps"_s);
        add("channels of the import",
            {{LapRole::Position, position, 100.0, true},
             {LapRole::LapNumber, Samples(15, 1.0) + Samples(20, 2.0) + Samples(20, 3.0) + Samples(5, 4.0), 1.0, false,
              true},
             {LapRole::LastLapTime, Samples(18, 0.0) + Samples(42, 20.0), 1.0, false, true}},
            {}, {}, u"cclc"_s);
        add("channels of the import, late or in another unit",
            {{LapRole::Position, position, 100.0, true},
             {LapRole::LapNumber, Samples(16, 1.0) + Samples(20, 2.0) + Samples(20, 3.0) + Samples(4, 4.0), 1.0, false,
              true},
             {LapRole::LastLapTime, Samples(18, 0.0) + Samples(42, 20000.0), 0.001, false, true}},
            {}, {}, u"cflf"_s);
        row("one lap", {}, {}, -1.0, {0, 59}, u"lll-; 7 0 1e-06 0; 7 0 59 98.3333"_s);
        row("one lap that ends after the last row", {}, {}, 60.5, {0, 60.5},
            u"llll; 7 0 1e-06 0; 8 60500 1e-06 0; closed at 60.5"_s);
        row("one lap that ends elsewhere", {}, {}, 30.0, {0, 59}, u"lll-; 7 0 1e-06 0; 7 0 59 98.3333"_s);
    }
    void plans()
    {
        QFETCH(std::vector<Said>, channels);
        QFETCH(LapMarks, marks);
        QFETCH(double, onlyLapEnd);
        QFETCH(Samples, times);
        LapClues clues;
        clues.lastTime = 59.0;
        clues.areRowsKept = true;
        for (const Said &said : channels)
            clues.channels.push_back(survey(said));
        if (marks.origin == u"--laps-at")
            clues.userMarks = marks;
        else
            clues.marks = {marks};
        if (onlyLapEnd != 0.0)
            clues.onlyLap = 7;
        if (onlyLapEnd > 0.0)
            clues.onlyLapEnd = onlyLapEnd;
        QString result;
        try {
            LapPlan plan(std::move(clues));
            result = outline(plan, times);
        } catch (const RewriteError &error) {
            result = error.text();
        }
        QTEST(result, "expected");
    }
};

QTEST_APPLESS_MAIN(TestLapPlan)
#include "tst_lapplan.moc"
