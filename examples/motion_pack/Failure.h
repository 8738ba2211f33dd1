#pragma once

#include <QtCore/QString>

#include <stdexcept>

/// Ends the program with one line on standard error.
class Failure : public std::runtime_error
{
public:
    explicit Failure(const QString& text)
        : std::runtime_error(text.toStdString())
    {}
};

/// The command line makes no sense.
class UsageError : public Failure
{
public:
    using Failure::Failure;
};

/// `name` in quotes for a message of one line: control characters are shown as `\xNN`.
inline QString quoted(const QString& name)
{
    QString shown;
    for (const QChar letter : name) {
        shown += letter.unicode() < 0x20 || letter.unicode() == 0x7F
                     ? QStringLiteral("\\x%1").arg(letter.unicode(), 2, 16, QLatin1Char('0'))
                     : QString(letter);
    }
    return u'\'' + shown + u'\'';
}
