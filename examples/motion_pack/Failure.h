#pragma once

#include <QtCore/QString>

#include <stdexcept>

/// Ends the program with one line on standard error.
struct Failure : std::runtime_error
{
    explicit Failure(const QString& text, int code = 1)
        : std::runtime_error(text.toStdString())
        , exitCode(code)
    {}

    int exitCode;
};
