#pragma once

// Internal: what is left of the samples that a log is believed to hold (ldSampleAllowance in ldfile.h).

#include <QtCore/qglobal.h>

struct LdAllowance
{
    qint64 left;

    /// Takes @p samples; takes nothing and says so where they are more than is left.
    bool take(qint64 samples)
    {
        if (samples > left)
            return false;
        left -= samples;
        return true;
    }
};
