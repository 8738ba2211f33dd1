#pragma once

#include <QtCore/QString>

/// Thrown to end the program with one line on standard error.
struct Failure
{
    QString text;
    int exitCode = 1;
};
