#include "tools/process_setup.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <new>

#include "base/memory.h"
#include "base/output/unfinished_files.h"

extern "C" {

static void cleanUpAndEnd(int signal) {
  zel::removeUnfinishedFiles();
  // Takes effect on return, as the signal is blocked until then.
  std::signal(signal, SIG_DFL);
  ::raise(signal);
}
}

namespace zelsvm_main {

void occupyStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (::fcntl(stream, F_GETFD) < 0)
      // Opened for reading, standard output still fails; the lowest free number is this one.
      static_cast<void>(::open("/dev/null", stream == STDERR_FILENO ? O_WRONLY : O_RDONLY));
}

void ignoreWriteSignals() {
  for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
}

void removeUnfinishedFilesAtSignals() {
  struct sigaction action {};
  action.sa_handler = cleanUpAndEnd;
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
    struct sigaction before {};
    if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
      ::sigaction(signal, &action, nullptr);
  }
}

void explainLackOfMemory() { std::set_new_handler(zel::throwOutOfMemory); }

}  // namespace zelsvm_main
