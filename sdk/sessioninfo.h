#pragma once

// The argument of DataEmitter::sendSessionInfo (dataemitter.h).

#include "orva_export.h"

namespace KOV::SDK {

/// Says that there is a session, and nothing more.
class ORVA_EXPORT SessionInfo
{
public:
    // Not defaulted: newer Qt gives the meta-type of a class that is trivial no hook for default construction.
    SessionInfo() {} // NOLINT(modernize-use-equals-default)
};

} // namespace KOV::SDK
