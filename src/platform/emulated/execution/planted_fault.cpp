#include "platform/emulated/execution/planted_fault.h"

namespace zel::device {
namespace {

Synchronisation omittedKind = Synchronisation::barrier;
unsigned omittedNumber = 0;  // 0 when there is no fault

}  // namespace

PlantedFault::PlantedFault(Synchronisation kind, unsigned nth) {
  omittedKind = kind;
  omittedNumber = nth;
}

PlantedFault::~PlantedFault() { omittedNumber = 0; }

bool PlantedFault::omits(Synchronisation kind, unsigned nth) {
  return nth == omittedNumber && kind == omittedKind;
}

}  // namespace zel::device
