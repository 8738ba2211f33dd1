#include "Interruption.h"

#include "Failure.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t sInterrupted = 0;

void remember(int) { sInterrupted = 1; }

} // namespace

void awaitInterruption()
{
    std::signal(SIGINT, remember);
    std::signal(SIGTERM, remember);
#if defined(SIGPIPE) // Windows has none: a reader of our output that goes away must not end the packing.
    std::signal(SIGPIPE, SIG_IGN);
#endif
}

void endIfInterrupted()
{
    if (sInterrupted != 0) {
        throw Failure(QStringLiteral("interrupted; nothing was kept"));
    }
}
