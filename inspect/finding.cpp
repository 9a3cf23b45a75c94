#include "inspect/finding.h"

#include <array>

namespace Inspect {

namespace {

struct Code
{
    QLatin1String text;
    Severity severity;
};

constexpr auto codeCount = static_cast<std::size_t>(FindingCode::Count);

constexpr std::array<Code, codeCount> codes{{
    {QLatin1String("not-a-log"), Severity::Error},
    {QLatin1String("no-header"), Severity::Error},
    {QLatin1String("no-records"), Severity::Error},
    {QLatin1String("no-rows"), Severity::Error},
    {QLatin1String("quoted-point"), Severity::Error},
    {QLatin1String("rows-not-read"), Severity::Error},
    {QLatin1String("shifted-cells"), Severity::Error},
    {QLatin1String("not-a-number"), Severity::Error},
    {QLatin1String("records-dropped"), Severity::Error},
    {QLatin1String("no-lap-channel"), Severity::Error},
    {QLatin1String("no-laps-cut"), Severity::Error},
    {QLatin1String("no-lap-marks"), Severity::Error},
    {QLatin1String("short-laps"), Severity::Error},
    {QLatin1String("missing-channel"), Severity::Error},
    {QLatin1String("looks-like"), Severity::Error},
    {QLatin1String("implausible-count"), Severity::Error},
    {QLatin1String("cut-off"), Severity::Error},
    {QLatin1String("uneven-rows"), Severity::Warning},
    {QLatin1String("empty-cells"), Severity::Warning},
    {QLatin1String("thinned"), Severity::Warning},
    {QLatin1String("time-gap"), Severity::Warning},
    {QLatin1String("duplicate-name"), Severity::Warning},
    {QLatin1String("constant-channel"), Severity::Warning},
    {QLatin1String("broken-sidecar"), Severity::Warning},
    {QLatin1String("unknown-session"), Severity::Warning},
    {QLatin1String("item-without-unit"), Severity::Warning},
}};

} // namespace

QLatin1String codeText(FindingCode code)
{
    return codes[static_cast<std::size_t>(code)].text;
}

Severity severityOf(FindingCode code)
{
    return codes[static_cast<std::size_t>(code)].severity;
}

} // namespace Inspect
