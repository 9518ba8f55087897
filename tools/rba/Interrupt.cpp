#include "tools/rba/Interrupt.h"

#include <csignal>
#include <cstdlib>
#include <initializer_list>

namespace rb::cli {
namespace {

volatile std::sig_atomic_t noted = 0;

void note(int signal) {
    noted = signal;
    std::signal(signal, SIG_DFL);
}

}  // namespace

InterruptGuard::InterruptGuard() {
    noted = 0;
    for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, note);
}

InterruptGuard::~InterruptGuard() {
    for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, SIG_DFL);
}

void InterruptGuard::check() {
    if (noted) throw Interrupted();
}

void InterruptGuard::endProgram() {
    std::raise(noted ? static_cast<int>(noted) : SIGINT);
    std::abort();  // not reached: the signal has its default effect again
}

}  // namespace rb::cli
