#include "tools/rba/Interrupt.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdlib>

namespace rb::cli {
namespace {

constexpr std::array<int, 2> kSignals{SIGINT, SIGTERM};

volatile std::sig_atomic_t noted = 0;
std::array<struct sigaction, kSignals.size()> former;

void note(int signal) { noted = signal; }

}  // namespace

InterruptGuard::InterruptGuard() {
    noted = 0;
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], nullptr, &former[i]);
        // Who started the program in the background, or with nohup, does not want it to end.
        if (former[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
    }
}

InterruptGuard::~InterruptGuard() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &former[i], nullptr);
}

void InterruptGuard::check() {
    if (noted) throw Interrupted();
}

void InterruptGuard::endProgram() {
    std::raise(noted ? static_cast<int>(noted) : SIGINT);
    std::abort();  // not reached: a signal that is noted has its default effect again
}

}  // namespace rb::cli
