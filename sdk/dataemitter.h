#pragma once

// The signal hub through which a plug-in reports to its host. Its owner: plugin/plugininterfaceimport.h.

#include "orva_export.h"
#include "sdk/lap.h"
#include "sdk/lapheader.h"
#include "sdk/liveplugininfo.h"
#include "sdk/sample.h"
#include "sdk/sessioninfo.h"

#include <QtCore/QDebug>
#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

namespace KOV::SDK {

/// Carries signals from a plug-in to whoever connects; holds nothing and checks nothing.
///
/// Signals are emitted on the sender's thread; delivery depends on the kind of connection. A queued connection copies
/// the arguments, but a lap is passed by shared pointer: sender and receivers then share one lap.
/// A file import sends messages only; the other signals are for plug-ins that follow a running session.
class ORVA_EXPORT DataEmitter : public QObject
{
    Q_OBJECT

public:
    explicit DataEmitter(QObject *parent = nullptr);
    ~DataEmitter() override;

    // The signals' order and names, those of their parameters and the full names of the types are part of the
    // meta-object, and hosts may use it. The types are complete here, since moc records meta-types of complete types
    // only.
Q_SIGNALS:
    void sendConnected();
    void sendDisconnected();
    void sendNotConnected();
    void sendConnectivityAvailable(bool available);
    void sendTelemetryLap(QSharedPointer<KOV::SDK::Lap> lap);
    void sendTelemetryLapHeader(const KOV::SDK::LapHeader &header);
    void sendCarListChanged(const KOV::SDK::LivePluginInfo &pluginInfo);
    void sendSample(const KOV::SDK::Sample &sample);
    void sendSessionInfo(KOV::SDK::SessionInfo sessionInfo);
    /// A text for people; @p verbose is a level that the sender chooses and the library never reads.
    void sendMessage(const QString &message, int verbose);
    void sendProgress(int percent);
};

} // namespace KOV::SDK
