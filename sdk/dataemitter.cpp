#include "sdk/dataemitter.h"

namespace KOV::SDK {

DataEmitter::DataEmitter(QObject *parent)
    : QObject(parent)
{
}

DataEmitter::~DataEmitter() = default;

} // namespace KOV::SDK
