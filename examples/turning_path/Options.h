#pragma once

#include <Velor.Base/VelorVectors.h>

#include <QtCore/QString>
#include <QtCore/QStringList>

/// What the command line asks for.
struct Options
{
    enum class Picture
    {
        Path,
        Sheet,
        Easing
    };

    Picture picture = Picture::Path;
    TVec2d<float> start;
    TVec2d<float> target;
    /// Degrees, counter-clockwise from the x axis.
    float heading = 0;
    float bulge = 0;
    float handle = 0;
    float runIn = 0;
    int segments = 1;
    bool dark = false;
    /// Ends in .svg or .png.
    QString out;

    /// The unit vector of a heading in degrees, exact for quarter turns.
    static TVec2d<float> direction(float degrees);
};

/// What came of reading a command line. `error` is one line, empty when all is well; `help` is empty unless
/// it was asked for.
struct ParsedOptions
{
    Options options;
    QString error;
    QString help;
};

/// Reads the arguments, the program's name first. Needs the application object.
ParsedOptions parseOptions(const QStringList& arguments);
