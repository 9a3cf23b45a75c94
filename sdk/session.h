#pragma once

// The kinds of session a lap can belong to. Their display texts: sdk_utils.h.

#include <QtCore/qglobal.h>

namespace KOV::SDK {

/// Kind of session. The numbers are stored by hosts; 12 to 126 are not in use.
enum class Session : qint32
{
    UnknownSession = -1,
    TestSession = 0,
    Practice = 1,
    Qualify = 2,
    Warmup = 3,
    FormationLap = 4,
    Race = 5,
    TimeAttack = 6,
    Hotlap = 7,
    Drift = 8,
    Drag = 9,
    Hotstint = 10,
    Superpole = 11,
    OtherSession = 127
};

} // namespace KOV::SDK
