#pragma once

// The signal hub through which a plug-in speaks to its host. Who owns one: plugin/plugininterfaceimport.h.

#include "orva_export.h"

#include <QtCore/QObject>
#include <QtCore/QString>

namespace KOV::SDK {

/// Carries signals from a plug-in to whoever connects; holds nothing and checks nothing.
///
/// Signals are emitted on the thread that has something to say; delivery follows the kind of connection.
class ORVA_EXPORT DataEmitter : public QObject
{
    Q_OBJECT

public:
    explicit DataEmitter(QObject *parent = nullptr);
    ~DataEmitter() override;

Q_SIGNALS:
    /// A text for people; @p verbose is a level that the sender chooses and the library never reads.
    void sendMessage(const QString &message, int verbose);
};

} // namespace KOV::SDK
