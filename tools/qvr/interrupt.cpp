// The handler only sets a flag.
#include "interrupt.h"

#include <csignal>

#include "errors.h"

namespace qvr::tool {

namespace {

volatile std::sig_atomic_t pressed = 0;

extern "C" void notePressed(int) {
    pressed = 1;
}

}  // namespace

void catchInterrupts() {
    struct sigaction action {};
    action.sa_handler = notePressed;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;  // no restart: a read from a terminal or pipe must come back
    sigaction(SIGINT, &action, nullptr);
    // A file that may not grow further is an error of the write, not the end of the program.
    std::signal(SIGXFSZ, SIG_IGN);
}

void stopIfInterrupted() {
    if (pressed) throw Failure(Exit::interrupted, "", "", "interrupted", "Nothing more was changed.");
}

}  // namespace qvr::tool
