// An import plug-in that looks at no file: its laps hold what a host has to cope with. The build says which interface
// its record names, and whether its object offers that.

#include "plugin/plugininterfaceimport.h"

#include <cmath>
#include <limits>

using namespace KOV::SDK;
using namespace Qt::StringLiterals;

class OddPlugin : public QObject, public PluginInterfaceImport
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ODD_PLUGIN_IID)
#ifndef ODD_PLUGIN_LIES
    Q_INTERFACES(KOV::SDK::PluginInterfaceImport)
#endif

public:
    QString pluginName() const override
    {
        return u"odd"_s;
    }
    QString sourceName() const override
    {
        return {};
    }
    QString pluginVersion() const override
    {
        return u"1"_s;
    }
    QList<QString> availableImportFormats() const override
    {
        return {};
    }

    QList<QSharedPointer<Lap>> import(const QString &path, const QString & /*format*/,
                                      const QMap<QString, QVariant> & /*options*/) override
    {
        message(u"two\n\u202Elines"_s, 0);
        if (path.endsWith(u"nothing"))
            return {};
        if (path.endsWith(u"thrown"))
            throw 1;                                 // what no host can expect
        return {lapOf(40, 0, true, QTime(0, 1, 20)), // the fastest, but an out lap
                lapOf(41, 1, true, QTime(0, 1, 30, 5)),
                lapOf(42, 1, true, QTime(0, 1, 30, 5)), // a tie: the earlier counts
                nullptr,
                lapOf(43, 1, true, QTime(0, 59, 59)),
                lapOf(44, 1, true, QTime(0, 0)),
                lapOf(45, 1, false, QTime(0, 1, 0)), // not completed
                lapOf(46, -1, true, QTime())};
    }

private:
    static QSharedPointer<Lap> lapOf(qint32 number, qint32 kind, bool completed, QTime time)
    {
        auto lap = QSharedPointer<Lap>::create();
        LapHeader &header = lap->header();
        header.lapNumber = number;
        header.lapKind = kind;
        header.completed = completed;
        header.lapTime = time;
        header.venueName = u"\x1b[2JN\nring"_s;
        const double none = invalidValue;
        const double infinity = std::numeric_limits<double>::infinity();
        constexpr quint64 bytes = 0x8182838485868788; // negative in any signed type, and too long for a double
        for (const char *type : {"char", "signed char", "uchar", "short", "ushort", "int", "uint", "long", "ulong",
                                 "qlonglong", "qulonglong", "std::nullptr_t"})
            header.dynamicData.setValue(QLatin1String(type), QVariant(QMetaType::fromName(type), &bytes), QString());
        for (const QVariant &value : {QVariant(true), QVariant(0.1F), QVariant(-infinity)})
            header.dynamicData.setValue(QLatin1String(value.typeName()), value, QString());
        const auto channel = [](const Channel &samples) { return QSharedPointer<Channel>::create(samples); };
        lap->addChannel(channel({-0.0, 0.1, none, std::nan(""), infinity, 1e-7}), u"a,\"b\""_s);
        lap->addChannel(channel({-infinity, 1.0 / 3, 123456789.0, none, none, none}), u"東"_s);
        lap->addChannel(channel({none, none, none, none, none, none}), u"none"_s);
        lap->addCalculatedChannel(channel({7.0}), u"none"_s);
        lap->addCalculatedChannel(channel({8.0}), u"sum"_s);
        return lap;
    }
};

#include "oddplugin.moc"
