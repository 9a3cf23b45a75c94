// An import plug-in that looks at no file: its laps hold what a host has to cope with.

#include "plugin/plugininterfaceimport.h"

#include <limits>

using namespace KOV::SDK;

class OddPlugin : public QObject, public PluginInterfaceImport
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "kovdata.PluginInterfaceImport/0.2")
    Q_INTERFACES(KOV::SDK::PluginInterfaceImport)

public:
    QString pluginName() const override { return QStringLiteral("odd"); }
    QString sourceName() const override { return {}; }
    QString pluginVersion() const override { return QStringLiteral("1"); }
    QList<QString> availableImportFormats() const override { return {}; }

    QList<QSharedPointer<Lap>> import(const QString &path, const QString & /*format*/,
                                      const QMap<QString, QVariant> & /*options*/) override
    {
        message(QStringLiteral("two\nlines"), 0);
        if (path.endsWith(QLatin1String("nothing")))
            return {};
        if (path.endsWith(QLatin1String("thrown")))
            throw 1; // what no host can expect
        QList<QSharedPointer<Lap>> laps;
        add(laps, 0, true, QTime(0, 1, 20)); // the fastest, but an out lap
        add(laps, 1, true, QTime(0, 1, 30, 5));
        add(laps, 1, true, QTime(0, 1, 30, 5)); // a tie: the earlier counts
        add(laps, 1, true, QTime(0, 59, 59));
        add(laps, 1, true, QTime(0, 0));
        add(laps, 1, false, QTime(0, 1, 0)); // not completed
        add(laps, -1, true, QTime());
        laps.insert(3, nullptr);
        return laps;
    }

private:
    static void add(QList<QSharedPointer<Lap>> &laps, int kind, bool completed, QTime time)
    {
        const double infinity = std::numeric_limits<double>::infinity();
        const auto lap = QSharedPointer<Lap>::create();
        lap->header().lapKind = kind;
        lap->header().completed = completed;
        lap->header().lapTime = time;
        lap->header().lapNumber = static_cast<qint32>(laps.size()) + 40;
        lap->header().venueName = QStringLiteral("\x1b[2JN\nring");
        lap->header().dynamicData.setValue(QStringLiteral("b"), 0.1, QStringLiteral("mm"));
        lap->header().dynamicData.setValue(QStringLiteral("Z"), QStringLiteral("soft"), QString());
        const double none = invalidValue;
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const qlonglong lowest = std::numeric_limits<qlonglong>::min();
        const QVariantList kinds{QVariant::fromValue('a'),
                                 QVariant::fromValue<signed char>(-3),
                                 QVariant::fromValue<uchar>(200),
                                 QVariant::fromValue<short>(-4),
                                 QVariant::fromValue<ushort>(65535),
                                 -5,
                                 4294967295U,
                                 QVariant::fromValue<long>(lowest),
                                 QVariant::fromValue<ulong>(9007199254740993U),
                                 lowest,
                                 std::numeric_limits<qulonglong>::max(),
                                 true,
                                 0.1F,
                                 nan,
                                 QVariant::fromValue(nullptr)};
        for (const QVariant &value : kinds)
            lap->header().dynamicData.setValue(QLatin1String(value.typeName()), value, QString());
        const Channel numbers{-0.0, 0.1, none, nan, infinity, 1e-7};
        const Channel more{-infinity, 1.0 / 3, 123456789.0, none, none, none};
        lap->addChannel(QSharedPointer<Channel>::create(numbers), QStringLiteral("a,\"b\""));
        lap->addChannel(QSharedPointer<Channel>::create(more), QStringLiteral("東"));
        lap->addChannel(QSharedPointer<Channel>::create(Channel{none, none, none, none, none, none}),
                        QStringLiteral("none"));
        lap->addCalculatedChannel(QSharedPointer<Channel>::create(Channel{7.0}), QStringLiteral("none"));
        lap->addCalculatedChannel(QSharedPointer<Channel>::create(Channel{8.0}), QStringLiteral("sum"));
        laps.append(lap);
    }
};

#include "oddplugin.moc"
