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
}

void endIfInterrupted()
{
    if (sInterrupted != 0) {
        throw Failure(QStringLiteral("interrupted; nothing was kept"));
    }
}
