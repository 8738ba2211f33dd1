#include "Picture.h"

#include <Velor.Base/VelorVersion.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QFileInfo>
#include <QtCore/QLoggingCategory>
#include <QtCore/QSysInfo>
#include <QtGui/QGuiApplication>

#include <cmath>
#include <cstdio>

namespace {

enum ExitCode
{
    Done = 0,
    NotWritten = 1,
    WrongUsage = 2
};

/// A mistake of the command line, as one line.
struct UsageError
{
    QString text;
};

/// The `count` numbers of an option; `form` tells the user what it takes.
QList<float> numbers(const QCommandLineParser& parser, const QString& option, qsizetype count,
                     const char* form)
{
    // Beyond this, single precision has too few places apart to draw them.
    constexpr float Largest = 1e6F;
    const QString text = parser.value(option);
    QList<float> values;
    bool isGood = true;
    for (const QString& part : text.split(u',')) {
        bool isNumber = false;
        values.append(part.toFloat(&isNumber));
        isGood = isGood && isNumber && std::abs(values.last()) <= Largest;
    }
    if (!isGood || values.size() != count) {
        throw UsageError{
            QStringLiteral("--%1 takes %2, not '%3'").arg(option, QString::fromLatin1(form), text)};
    }
    return values;
}

float number(const QCommandLineParser& parser, const QString& option)
{
    return numbers(parser, option, 1, "a number from -1000000 to 1000000").first();
}

TVec2d<float> point(const QCommandLineParser& parser, const QString& option)
{
    const QList<float> values = numbers(parser, option, 2, "two numbers such as 10,0");
    return {values[0], values[1]};
}

void describe(QCommandLineParser& parser)
{
    const auto add = [&parser](const char* name, const char* description, const char* value = nullptr,
                               const char* standard = nullptr) {
        parser.addOption({QString::fromLatin1(name), QString::fromLatin1(description),
                          QString::fromLatin1(value), QString::fromLatin1(standard)});
    };
    parser.setApplicationDescription(QStringLiteral("Draws turning curves as a picture."));
    add("out", "The picture: a name that ends in .svg or .png.", "file");
    add("start", "Where the path begins (0,0).", "x,y", "0,0");
    add("target", "Where it ends (10,0).", "x,y", "10,0");
    add("heading", "Direction of travel at the target, counter-clockwise from the x axis (90).", "degrees",
        "90");
    add("bulge", "How far the curve bows out, as a fraction of its chord (0.5).", "fraction", "0.5");
    add("handle", "How far the second control point lies behind the curve's end (3).", "length", "3");
    add("run-in", "Length of the straight piece that ends on the target (1.5).", "length", "1.5");
    add("segments", "Segments of the curve, 1 to 10000 (12).", "count", "12");
    add("sheet", "A contact sheet of twelve headings, the other values as given.");
    add("easing", "The easing curves.");
    add("dark", "A dark ground.");
    parser.addHelpOption();
    parser.addVersionOption();
}

PathOptions readPath(const QCommandLineParser& parser)
{
    constexpr int MostSegments = 10000;
    PathOptions path;
    path.start = point(parser, QStringLiteral("start"));
    path.target = point(parser, QStringLiteral("target"));
    path.heading = number(parser, QStringLiteral("heading"));
    path.bulge = number(parser, QStringLiteral("bulge"));
    path.handle = number(parser, QStringLiteral("handle"));
    path.runIn = number(parser, QStringLiteral("run-in"));
    const QString segments = parser.value(QStringLiteral("segments"));
    path.segments = segments.toInt();
    if (path.segments < 1 || path.segments > MostSegments) {
        throw UsageError{
            QStringLiteral("--segments takes a whole number from 1 to 10000, not '%1'").arg(segments)};
    }
    return path;
}

/// The file that the picture goes to.
QString readOut(const QCommandLineParser& parser)
{
    if (!parser.positionalArguments().isEmpty()) {
        throw UsageError{
            QStringLiteral("'%1' belongs to no option").arg(parser.positionalArguments().first())};
    }
    QString out = parser.value(QStringLiteral("out"));
    const QString suffix = QFileInfo(out).suffix().toLower();
    if (suffix != QLatin1String("svg") && suffix != QLatin1String("png")) {
        throw UsageError{
            QStringLiteral("--out takes a file name that ends in .svg or .png, not '%1'").arg(out)};
    }
    return out;
}

Picture readPicture(const QCommandLineParser& parser)
{
    const PathOptions path = readPath(parser);
    const bool isSheet = parser.isSet(QStringLiteral("sheet"));
    const bool isEasing = parser.isSet(QStringLiteral("easing"));
    if (isSheet && isEasing) {
        throw UsageError{QStringLiteral("--sheet and --easing are two pictures: ask for one of them")};
    }
    return isSheet ? sheetPicture(path) : isEasing ? easingPicture() : pathPicture(path);
}

/// The program opens no window, so that it needs no display; on Linux Qt would ask for one.
void runWithoutDisplay()
{
    if (QSysInfo::kernelType() == QLatin1String("linux") && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
}

int fail(ExitCode code, const QString& message)
{
    std::fprintf(stderr, "turning_path: %s\n", qPrintable(message));
    return code;
}

} // namespace

int main(int argc, char** argv)
{
    runWithoutDisplay();
    // Standard error is for this program's lines, not for Qt's notes on a missing session folder and the
    // like.
    QLoggingCategory::setFilterRules(QStringLiteral("*.warning=false"));
    const QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("turning_path"));
    QGuiApplication::setApplicationVersion(VelorVersion::current().toString());

    QCommandLineParser parser;
    describe(parser);
    if (!parser.parse(QGuiApplication::arguments())) {
        return fail(WrongUsage, parser.errorText());
    }
    parser.process(application);
    try {
        const QString out = readOut(parser);
        const Theme theme = parser.isSet(QStringLiteral("dark")) ? Theme::dark() : Theme::light();
        const QString reason = savePicture(out, readPicture(parser), theme);
        return reason.isEmpty() ? Done
                                : fail(NotWritten, QStringLiteral("cannot write %1: %2").arg(out, reason));
    } catch (const UsageError& error) {
        return fail(WrongUsage, error.text);
    }
}
