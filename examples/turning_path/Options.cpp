#include "Options.h"

#include <QtCore/QCommandLineParser>

#include <cmath>
#include <numbers>

namespace {

constexpr int MostSegments = 10000;
/// Beyond this, single precision tells too few places apart to draw them.
constexpr float LargestNumber = 1e6F;

/// Reads the values of a parsed command line, and keeps the first complaint.
class Reader
{
public:
    explicit Reader(const QCommandLineParser& parser)
        : mParser(parser)
    {}

    float number(const char* option)
    {
        bool ok = false;
        const float value = toNumber(text(option), &ok);
        return ok ? value : float(complain(option, "a number from -1000000 to 1000000"));
    }

    TVec2d<float> point(const char* option)
    {
        const QStringList parts = text(option).split(u',');
        bool xOk = false;
        bool yOk = false;
        const TVec2d<float> value{toNumber(parts[0], &xOk), toNumber(parts.value(1), &yOk)};
        if (!xOk || !yOk || parts.size() != 2) {
            complain(option, "two numbers such as 10,0");
        }
        return value;
    }

    int segments(const char* option)
    {
        bool ok = false;
        const int value = text(option).toInt(&ok);
        return ok && value >= 1 && value <= MostSegments ? value
                                                         : complain(option, "a whole number from 1 to 10000");
    }

    QString pictureFile(const char* option)
    {
        QString name = text(option);
        if (!name.endsWith(QLatin1String(".svg")) && !name.endsWith(QLatin1String(".png"))) {
            complain(option, "a file name that ends in .svg or .png");
        }
        return name;
    }

    bool flag(const char* option) const { return mParser.isSet(QString::fromLatin1(option)); }
    const QString& error() const { return mError; }

private:
    static float toNumber(const QString& text, bool* ok)
    {
        const float value = text.toFloat(ok);
        *ok = *ok && std::abs(value) <= LargestNumber;
        return value;
    }

    QString text(const char* option) const { return mParser.value(QString::fromLatin1(option)); }

    int complain(const char* option, const char* form)
    {
        if (mError.isEmpty()) {
            mError = QStringLiteral("--%1 takes %2, not '%3'")
                         .arg(QString::fromLatin1(option), QString::fromLatin1(form), text(option));
        }
        return 0;
    }

    const QCommandLineParser& mParser;
    QString mError;
};

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
    add("help", "This text.");
}

ParsedOptions readOptions(const QCommandLineParser& parser)
{
    Reader read(parser);
    ParsedOptions parsed;
    Options& options = parsed.options;
    options.start = read.point("start");
    options.target = read.point("target");
    options.heading = read.number("heading");
    options.bulge = read.number("bulge");
    options.handle = read.number("handle");
    options.runIn = read.number("run-in");
    options.segments = read.segments("segments");
    options.out = read.pictureFile("out");
    options.dark = read.flag("dark");
    if (read.flag("sheet")) {
        options.picture = Options::Picture::Sheet;
    } else if (read.flag("easing")) {
        options.picture = Options::Picture::Easing;
    }
    parsed.error = read.error();
    return parsed;
}

} // namespace

TVec2d<float> Options::direction(float degrees)
{
    constexpr double Noise = 1e-12;
    const double radians = std::remainder(double(degrees), 360) * std::numbers::pi / 180;
    const auto clean = [](double value) { return std::abs(value) < Noise ? 0.0F : float(value); };
    return {clean(std::cos(radians)), clean(std::sin(radians))};
}

ParsedOptions parseOptions(const QStringList& arguments)
{
    QCommandLineParser parser;
    describe(parser);
    if (!parser.parse(arguments)) {
        return {{}, parser.errorText(), {}};
    }
    if (parser.isSet(QStringLiteral("help"))) {
        return {{}, {}, parser.helpText()};
    }
    if (!parser.positionalArguments().isEmpty()) {
        return {
            {}, QStringLiteral("'%1' belongs to no option").arg(parser.positionalArguments().first()), {}};
    }
    if (!parser.isSet(QStringLiteral("out"))) {
        return {{}, QStringLiteral("--out is missing: name a file that ends in .svg or .png"), {}};
    }
    if (parser.isSet(QStringLiteral("sheet")) && parser.isSet(QStringLiteral("easing"))) {
        return {{}, QStringLiteral("--sheet and --easing are two pictures: ask for one of them"), {}};
    }
    return readOptions(parser);
}
