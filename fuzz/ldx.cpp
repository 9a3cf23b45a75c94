// A sidecar alone.

#include "ld/ldx.h"

#include "fuzz.h"
#include "sdk/sdk_utils.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = Fuzz::write(QStringLiteral("log.ldx"), Fuzz::bytesOf(data, size));
    const KOV::SDK::Session session = loadSession(path);
    Fuzz::require(session == KOV::SDK::Session::UnknownSession ||
                  KOV::SDK::sessionName(session) != QLatin1String("Unknown session"));
    const auto values = loadValues(path);
    Fuzz::require(static_cast<size_t>(values.size()) <= size);
    for (const KOV::SDK::Value &value : values) {
        const bool hasUnit = !value.unit().isNull();
        Fuzz::require(value.typeId() == QMetaType::Double ? hasUnit : !hasUnit && value.typeId() == QMetaType::QString);
    }
    return 0;
}
