#include "sdk/sdk_utils.h"

#include "sdk/channel.h"

#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QSet>

namespace KOV::SDK {

namespace {

// The library's one static initialiser, ready before any other code of the library runs. Here and below the texts are
// not QStringLiterals, since what hosts get must outlive the library.
const QMap<Session, QString> names{// NOLINT(cert-err58-cpp)
                                   {Session::UnknownSession, QLatin1String("Unknown session")},
                                   {Session::TestSession, QLatin1String("Test session")},
                                   {Session::Practice, QLatin1String("Practice")},
                                   {Session::Qualify, QLatin1String("Qualify")},
                                   {Session::Warmup, QLatin1String("Warmup")},
                                   {Session::FormationLap, QLatin1String("Formation lap")},
                                   {Session::Race, QLatin1String("Race")},
                                   {Session::TimeAttack, QLatin1String("TimeAttack")},
                                   {Session::Hotlap, QLatin1String("Hotlap")},
                                   {Session::Drift, QLatin1String("Drift")},
                                   {Session::Drag, QLatin1String("Drag")},
                                   {Session::Hotstint, QLatin1String("Hotstint")},
                                   {Session::Superpole, QLatin1String("Superpole")},
                                   {Session::OtherSession, QLatin1String("Other session")}};

} // namespace

bool isValidValue(double value)
{
    return value < invalidThreshold;
}

QString sessionName(Session session)
{
    return names.value(session, names.value(Session::UnknownSession));
}

QString carStatusToString(CarStatus status)
{
    static const QHash<CarStatus, QString> texts{{CarStatus::Undefined, QLatin1String("Undefined")},
                                                 {CarStatus::NotConnected, QLatin1String("Not connected")},
                                                 {CarStatus::NotInWorld, QLatin1String("Not in world")},
                                                 {CarStatus::WaitingForStart, QLatin1String("Waiting for start")},
                                                 {CarStatus::InPitStall, QLatin1String("In pit stall")},
                                                 {CarStatus::InPitlane, QLatin1String("In pitlane")},
                                                 {CarStatus::OutLap, QLatin1String("Out lap")},
                                                 {CarStatus::FlyingLap, QLatin1String("Flying lap")},
                                                 {CarStatus::OnTrack, QLatin1String("On track")},
                                                 {CarStatus::OffTrack, QLatin1String("Off track")}};
    return texts.value(status);
}

QString generateUniqueFileName(const QDir &directory, const QString &fileName)
{
    static const QList<QString> filters{QStringLiteral("*.*")};
    const QFileInfo wanted(fileName);
    const QString base = wanted.baseName();
    const QString ending = QLatin1Char('.') + wanted.suffix();
    const QList<QString> listed = directory.entryList(filters, QDir::Files | QDir::NoDotAndDotDot, QDir::NoSort);
    const QSet<QString> taken(listed.begin(), listed.end());

    QString candidate = base + ending;
    for (int number = 1; taken.contains(candidate); ++number)
        candidate = base + QLatin1Char('_') + QString::number(number) + ending;
    return directory.absolutePath() + QLatin1Char('/') + candidate;
}

} // namespace KOV::SDK
