#include "sdk/sdk_utils.h"

#include "sdk/channel.h"

#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QMap>

namespace KOV::SDK {

namespace {

// The library's one static initialiser. It is ready before any other code of the library runs.
const QMap<Session, QString> names{// NOLINT(cert-err58-cpp)
                                   {Session::UnknownSession, QStringLiteral("Unknown session")},
                                   {Session::TestSession, QStringLiteral("Test session")},
                                   {Session::Practice, QStringLiteral("Practice")},
                                   {Session::Qualify, QStringLiteral("Qualify")},
                                   {Session::Warmup, QStringLiteral("Warmup")},
                                   {Session::FormationLap, QStringLiteral("Formation lap")},
                                   {Session::Race, QStringLiteral("Race")},
                                   {Session::TimeAttack, QStringLiteral("TimeAttack")},
                                   {Session::Hotlap, QStringLiteral("Hotlap")},
                                   {Session::Drift, QStringLiteral("Drift")},
                                   {Session::Drag, QStringLiteral("Drag")},
                                   {Session::Hotstint, QStringLiteral("Hotstint")},
                                   {Session::Superpole, QStringLiteral("Superpole")},
                                   {Session::OtherSession, QStringLiteral("Other session")}};

} // namespace

bool isValidValue(double value)
{
    return value < invalidThreshold;
}

QString sessionName(Session session)
{
    const auto row = names.constFind(session);
    return row != names.cend() ? *row : QStringLiteral("Unknown session");
}

QString carStatusToString(CarStatus status)
{
    static const QHash<CarStatus, QString> texts{{CarStatus::Undefined, QStringLiteral("Undefined")},
                                                 {CarStatus::NotConnected, QStringLiteral("Not connected")},
                                                 {CarStatus::NotInWorld, QStringLiteral("Not in world")},
                                                 {CarStatus::WaitingForStart, QStringLiteral("Waiting for start")},
                                                 {CarStatus::InPitStall, QStringLiteral("In pit stall")},
                                                 {CarStatus::InPitlane, QStringLiteral("In pitlane")},
                                                 {CarStatus::OutLap, QStringLiteral("Out lap")},
                                                 {CarStatus::FlyingLap, QStringLiteral("Flying lap")},
                                                 {CarStatus::OnTrack, QStringLiteral("On track")},
                                                 {CarStatus::OffTrack, QStringLiteral("Off track")}};
    return texts.value(status);
}

QString generateUniqueFileName(const QDir &directory, const QString &fileName)
{
    static const QList<QString> filters{QStringLiteral("*.*")};
    const QFileInfo wanted(fileName);
    const QString base = wanted.baseName();
    const QString ending = QLatin1Char('.') + wanted.suffix();
    const QList<QString> taken = directory.entryList(filters, QDir::Files | QDir::NoDotAndDotDot, QDir::NoSort);

    QString candidate = base + ending;
    for (int number = 1; taken.contains(candidate, Qt::CaseSensitive); ++number)
        candidate = base + QLatin1Char('_') + QString::number(number) + ending;
    return directory.absolutePath() + QLatin1Char('/') + candidate;
}

} // namespace KOV::SDK
