// Turns at the device: its symbols serve one solve, prediction or fit at a time.
#pragma once

#include <mutex>

namespace zelsvm {

class SymbolUser;

// Of one device. Any thread may take turns.
class DeviceTurns {
 public:
  explicit DeviceTurns(int device) : device(device) {}

  // Makes it the calling thread's current device. Throws RuntimeException where there is none.
  void select() const;

 private:
  friend class SymbolUser;
  friend class DeviceTurn;

  int device;
  std::mutex lock;                   // of the device and of what follows
  const SymbolUser* last = nullptr;  // whose values the symbols have
};

// What has values of its own in device symbols.
class SymbolUser {
 public:
  explicit SymbolUser(DeviceTurns& turns) : turns(&turns) {}
  SymbolUser(const SymbolUser&) = delete;
  SymbolUser& operator=(const SymbolUser&) = delete;

 protected:
  virtual ~SymbolUser();
  // Writes them; called in a turn.
  virtual void publish() = 0;

 private:
  friend class DeviceTurn;
  DeviceTurns* turns;
};

// While this lives the calling thread has the device to itself.
class DeviceTurn {
 public:
  explicit DeviceTurn(SymbolUser& user);
  DeviceTurn(const DeviceTurn&) = delete;
  DeviceTurn& operator=(const DeviceTurn&) = delete;

  // Gives the symbols the user's values, which have changed.
  void publish();
  // The same unless they have them from the user's last turn.
  void publishIfLost();

 private:
  SymbolUser* user;
  std::scoped_lock<std::mutex> locked;
};

}  // namespace zelsvm
