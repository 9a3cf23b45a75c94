#include "inspect/sidecar.h"

#include "ld/sidecarfile.h"

#include <QtCore/QXmlStreamReader>

#include <algorithm>

namespace Inspect {

namespace {

constexpr double microsecond = 1e-6;

bool saysBeacon(const QString &text)
{
    return text.contains(QLatin1String("beacon"), Qt::CaseInsensitive) || text == QLatin1String("BCN");
}

class SidecarReader
{
public:
    explicit SidecarReader(const QString &path)
        : file(path)
        , xml(&file)
    {
        sidecar.exists = file.couldBeOpened();
    }

    Sidecar read()
    {
        while (sidecar.exists && nextElement())
            takeElement();
        return sidecar;
    }

private:
    bool endWith(const QString &error)
    {
        sidecar.error = error.endsWith(u'.') ? error.chopped(1) : error; // for use in a sentence
        sidecar.errorLine = xml.lineNumber();
        return false;
    }

    // Goes to the next start tag; false where the file ends, breaks off or goes beyond a limit.
    bool nextElement()
    {
        while (!xml.atEnd()) {
            file.beginToken();
            const auto token = xml.readNext();
            if (token == QXmlStreamReader::EndElement)
                --depth;
            if (token == QXmlStreamReader::StartElement)
                return ++depth <= SidecarFile::maxDepth ||
                       endWith(QStringLiteral("nested deeper than any logger writes"));
        }
        if (!xml.hasError())
            return false;
        return endWith(file.isBeyondLimit() ? QStringLiteral("larger than any logger writes") : xml.errorString());
    }

    void takeElement()
    {
        const QXmlStreamAttributes attributes = xml.attributes();
        const auto text = [&attributes](const char *name) { return attributes.value(QLatin1String(name)).toString(); };
        if (xml.name() == QLatin1String("MarkerGroup")) {
            const QString name = attributes.hasAttribute(QLatin1String("Name")) ? text("Name") : text("Type");
            sidecar.markerGroups.push_back({name, saysBeacon(text("Name")) || saysBeacon(text("Type")), {}});
        } else if (xml.name() == QLatin1String("Marker") && !sidecar.markerGroups.empty()) {
            bool isNumber = false;
            const double time = attributes.value(QLatin1String("Time")).toDouble(&isNumber);
            MarkerGroup &group = sidecar.markerGroups.back();
            if (isNumber)
                group.times.push_back(time * microsecond);
            group.isBeacons = group.isBeacons || saysBeacon(text("ClassName"));
        }
        if (!attributes.hasAttribute(QLatin1String("Id")))
            return;
        const QString id = text("Id");
        if (id == QLatin1String("Event")) {
            if (!sidecar.sessionWord)
                sidecar.sessionWord = text("Value");
        } else if (id != QLatin1String("Session")) {
            SidecarItem item{id, text("Value"), std::nullopt, xml.lineNumber()};
            if (attributes.hasAttribute(QLatin1String("Unit")))
                item.unit = text("Unit");
            sidecar.items.append(item);
        }
    }

    SidecarFile file;
    QXmlStreamReader xml;
    Sidecar sidecar;
    int depth = 0;
};

} // namespace

const std::vector<double> &Sidecar::beacons() const
{
    static const std::vector<double> none;
    const auto found = std::find_if(markerGroups.begin(), markerGroups.end(),
                                    [](const MarkerGroup &group) { return group.isBeacons && !group.times.empty(); });
    return found == markerGroups.end() ? none : found->times;
}

Sidecar readSidecar(const QString &path)
{
    return SidecarReader(path).read();
}

} // namespace Inspect
