// Lets tests see what happens when device code synchronises too little.
#pragma once

namespace zel::device {

enum class Synchronisation { barrier, fence };

// While this lives, each device thread does without one of its synchronisations, the nth of its
// kind in a launch (1 is the first). One at a time, made while no launch runs.
class PlantedFault {
 public:
  PlantedFault(Synchronisation kind, unsigned nth);
  ~PlantedFault();
  PlantedFault(const PlantedFault&) = delete;
  PlantedFault& operator=(const PlantedFault&) = delete;

  static bool omits(Synchronisation kind, unsigned nth);
};

}  // namespace zel::device
