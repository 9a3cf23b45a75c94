#include "ld/ldx.h"

#include "ld/sidecarfile.h"

#include <QtCore/QFileInfo>
#include <QtCore/QXmlStreamReader>

#include <utility>

using KOV::SDK::Session;
using KOV::SDK::Value;

namespace {

constexpr QLatin1String idAttribute("Id");
constexpr QLatin1String valueAttribute("Value");
constexpr QLatin1String unitAttribute("Unit");
constexpr QLatin1String eventId("Event");
constexpr QLatin1String sessionId("Session");
constexpr QLatin1String setupPrefix("CarSetup_");

// Calls visit(attributes) for the start tags of the sidecar at @p path, until it returns false. Ends where the file
// does, is damaged or exceeds a limit.
template <typename Visit>
void visitElements(const QString &path, Visit visit)
{
    SidecarFile file(path);
    QXmlStreamReader xml(&file);
    for (int depth = 0; depth <= SidecarFile::maxDepth && !xml.atEnd();) {
        file.beginToken();
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::EndElement)
            --depth;
        if (token == QXmlStreamReader::StartElement && ++depth <= SidecarFile::maxDepth && !visit(xml.attributes()))
            return;
    }
}

} // namespace

Session getSessionFromString(const QString &text)
{
    constexpr std::pair<QLatin1String, Session> words[]{
        {QLatin1String("Race"), Session::Race},         {QLatin1String("Offline testing"), Session::TestSession},
        {QLatin1String("Test"), Session::TestSession},  {QLatin1String("Qualify"), Session::Qualify},
        {QLatin1String("Practice"), Session::Practice}, {QLatin1String("Warmup"), Session::Warmup}};
    for (const auto &[word, session] : words) {
        if (text == word)
            return session;
    }
    return Session::UnknownSession;
}

QString sidecarPath(const QString &logPath)
{
    const QFileInfo log(logPath);
    return logPath.isEmpty() ? QString() : log.absolutePath() + u'/' + log.baseName() + QLatin1String(".ldx");
}

Session loadSession(const QString &path)
{
    Session session = Session::UnknownSession;
    visitElements(path, [&session](const QXmlStreamAttributes &attributes) {
        const bool isEvent = attributes.value(idAttribute) == eventId;
        if (isEvent)
            session = getSessionFromString(attributes.value(valueAttribute).toString());
        return !isEvent;
    });
    return session;
}

QMap<QString, Value> loadValues(const QString &path)
{
    QMap<QString, Value> values;
    visitElements(path, [&values](const QXmlStreamAttributes &attributes) {
        const QStringView id = attributes.value(idAttribute);
        if (!attributes.hasAttribute(idAttribute) || id == eventId || id == sessionId)
            return true;
        const QStringView text = attributes.value(valueAttribute);
        const QString name = id.toString().remove(setupPrefix);
        if (attributes.hasAttribute(unitAttribute))
            values.insert(name, Value(text.toDouble(), attributes.value(unitAttribute).toString()));
        else
            values.insert(name, Value(text.toString(), QString()));
        return true;
    });
    return values;
}
