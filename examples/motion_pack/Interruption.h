#pragma once

/// From now on, an interruption by the user (Ctrl-C) or the system does not end the program at once.
void awaitInterruption();

/// Raises Failure if an interruption has come since.
void endIfInterrupted();
