#include "ld/ldx.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QXmlStreamReader>

using KOV::SDK::Session;
using KOV::SDK::Value;

namespace {

constexpr QLatin1String idAttribute("Id");
constexpr QLatin1String valueAttribute("Value");
constexpr QLatin1String unitAttribute("Unit");
constexpr QLatin1String eventId("Event");
constexpr QLatin1String sessionId("Session");
constexpr QLatin1String setupPrefix("CarSetup_");

// A pipe or a device in the sidecar's place would block the import or never end, so only regular files are read.
bool openSidecar(QFile &file)
{
    return QFileInfo(file).isFile() && file.open(QIODevice::ReadOnly | QIODevice::Text);
}

} // namespace

Session getSessionFromString(const QString &text)
{
    if (text == QLatin1String("Race"))
        return Session::Race;
    if (text == QLatin1String("Offline testing") || text == QLatin1String("Test"))
        return Session::TestSession;
    if (text == QLatin1String("Qualify"))
        return Session::Qualify;
    if (text == QLatin1String("Practice"))
        return Session::Practice;
    if (text == QLatin1String("Warmup"))
        return Session::Warmup;
    return Session::UnknownSession;
}

Session loadSession(const QString &path)
{
    QFile file(path);
    if (!openSidecar(file))
        return Session::UnknownSession;
    QXmlStreamReader xml(&file);
    for (xml.readNext(); !xml.atEnd(); xml.readNext()) {
        const QXmlStreamAttributes attributes = xml.attributes();
        if (attributes.value(idAttribute) == eventId)
            return getSessionFromString(attributes.value(valueAttribute).toString());
    }
    return Session::UnknownSession;
}

QMap<QString, Value> loadValues(const QString &path)
{
    QMap<QString, Value> values;
    QFile file(path);
    if (!openSidecar(file))
        return values;
    QXmlStreamReader xml(&file);
    for (xml.readNext(); !xml.atEnd(); xml.readNext()) {
        const QXmlStreamAttributes attributes = xml.attributes();
        if (!attributes.hasAttribute(idAttribute))
            continue;
        const QStringView id = attributes.value(idAttribute);
        if (id == eventId || id == sessionId)
            continue;
        const QStringView text = attributes.value(valueAttribute);
        const QString name = id.toString().remove(setupPrefix);
        if (attributes.hasAttribute(unitAttribute))
            values.insert(name, Value(text.toDouble(), attributes.value(unitAttribute).toString()));
        else
            values.insert(name, Value(text.toString(), QString()));
    }
    return values;
}
