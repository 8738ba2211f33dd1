#include "Picture.h"

#include <Velor.Base/VelorVersion.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QFileInfo>
#include <QtCore/QLoggingCategory>
#include <QtCore/QSysInfo>
#include <QtGui/QGuiApplication>

#include <cmath>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int WrongUsage = 2;

/// Ends the program with one line on standard error.
struct Failure
{
    QString text;
    int exitCode = WrongUsage;
};

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(u"Draws turning curves as a picture."_s);
    parser.addOptions({
        {u"out"_s, u"The picture: a name that ends in .svg or .png."_s, u"file"_s},
        {u"start"_s, u"Where the path begins (0,0)."_s, u"x,y"_s, u"0,0"_s},
        {u"target"_s, u"Where it ends (10,0)."_s, u"x,y"_s, u"10,0"_s},
        {u"heading"_s, u"Direction of travel at the target, counter-clockwise from the x axis (90)."_s,
         u"degrees"_s, u"90"_s},
        {u"bulge"_s, u"How far the curve bows out, as a fraction of its chord (0.5)."_s, u"fraction"_s,
         u"0.5"_s},
        {u"handle"_s, u"How far the second control point lies behind the end (3)."_s, u"length"_s, u"3"_s},
        {u"run-in"_s, u"Length of the straight end of the path (1.5)."_s, u"length"_s, u"1.5"_s},
        {u"segments"_s, u"Segments of the curve, 1 to 10000 (12)."_s, u"count"_s, u"12"_s},
        {u"sheet"_s, u"A contact sheet of twelve headings, the other values as given."_s},
        {u"dark"_s, u"A dark background."_s},
    });
    parser.addHelpOption();
    parser.addVersionOption();
}

/// The `count` numbers of an option; `form` is what an error message says that it takes.
QList<float> numbers(const QCommandLineParser& parser, const QString& option, qsizetype count,
                     const QString& form)
{
    // Beyond this, single precision has too few places apart to draw them.
    constexpr float Largest = 1e6F;
    QList<float> values;
    bool isGood = true;
    for (const QString& part : parser.value(option).split(u',')) {
        bool isNumber = false;
        values.append(part.toFloat(&isNumber));
        isGood = isGood && isNumber && std::abs(values.last()) <= Largest;
    }
    if (!isGood || values.size() != count) {
        throw Failure{u"--%1 takes %2, not '%3'"_s.arg(option, form, parser.value(option))};
    }
    return values;
}

PathOptions readPath(const QCommandLineParser& parser)
{
    constexpr int MostSegments = 10000;
    const auto number = [&parser](const QString& option) {
        return numbers(parser, option, 1, u"a number from -1000000 to 1000000"_s).first();
    };
    const auto point = [&parser](const QString& option) {
        const QList<float> values = numbers(parser, option, 2, u"two numbers such as 10,0"_s);
        return TVec2d<float>(values.first(), values.last());
    };
    const QString segments = parser.value(u"segments"_s);
    const PathOptions path = {.start = point(u"start"_s),
                              .target = point(u"target"_s),
                              .heading = number(u"heading"_s),
                              .bulge = number(u"bulge"_s),
                              .handle = number(u"handle"_s),
                              .runIn = number(u"run-in"_s),
                              .segments = segments.toInt()};
    if (path.segments < 1 || path.segments > MostSegments) {
        throw Failure{u"--segments takes a whole number from 1 to 10000, not '%1'"_s.arg(segments)};
    }
    return path;
}

void run(const QCommandLineParser& parser)
{
    if (const QStringList strays = parser.positionalArguments(); !strays.isEmpty()) {
        throw Failure{u"'%1' belongs to no option"_s.arg(strays.first())};
    }
    const QString out = parser.value(u"out"_s);
    if (!QStringList{u"svg"_s, u"png"_s}.contains(QFileInfo(out).suffix(), Qt::CaseInsensitive)) {
        throw Failure{u"--out takes a file name that ends in .svg or .png, not '%1'"_s.arg(out)};
    }
    const PathOptions path = readPath(parser);
    const Picture picture = parser.isSet(u"sheet"_s) ? sheetPicture(path) : pathPicture(path);
    const Theme theme{.isDark = parser.isSet(u"dark"_s)};
    if (const QString reason = savePicture(out, picture, theme); !reason.isEmpty()) {
        throw Failure{u"cannot write %1: %2"_s.arg(out, reason), 1};
    }
}

} // namespace

int main(int argc, char** argv)
{
    // No window is opened, but on Linux Qt would look for a display all the same.
    if (QSysInfo::kernelType() == u"linux" && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    // Standard error is for this program's lines, not for Qt's notes on a missing session folder.
    QLoggingCategory::setFilterRules(u"*.warning=false"_s);
    const QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"turning_path"_s);
    QGuiApplication::setApplicationVersion(VelorVersion::current().toString());
    try {
        QCommandLineParser parser;
        describe(parser);
        if (!parser.parse(QGuiApplication::arguments())) {
            throw Failure{parser.errorText()};
        }
        parser.process(application); // Help and version.
        run(parser);
        return 0;
    } catch (const Failure& failure) {
        std::fprintf(stderr, "turning_path: %s\n", qPrintable(failure.text));
        return failure.exitCode;
    }
}
