#include "Pictures.h"
#include "TurningPath.h"

#include <QtCore/QSysInfo>
#include <QtGui/QGuiApplication>

#include <cstdio>

namespace {

enum ExitCode
{
    Done = 0,
    NotWritten = 1,
    WrongUsage = 2
};

/// The program opens no window, so that it needs no display; on Linux Qt would ask for one.
void goWithoutDisplay()
{
    if (QSysInfo::kernelType() == QLatin1String("linux") && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
}

/// Standard error is for this program's own lines: Qt tells there about missing session folders and the like.
void keepQtQuiet(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type == QtCriticalMsg || type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
    }
}

int fail(ExitCode code, const QString& message)
{
    std::fprintf(stderr, "turning_path: %s\n", qPrintable(message));
    return code;
}

bool save(const Options& options)
{
    const Theme theme = options.dark ? Theme::dark() : Theme::light();
    switch (options.picture) {
    case Options::Picture::Sheet:
        return savePicture(options.out, SheetPictureSize, theme, [&](QPainter& painter, const Theme& colors) {
            drawSheetPicture(painter, colors, options);
        });
    case Options::Picture::Easing:
        return savePicture(options.out, EasingPictureSize, theme, drawEasingPicture);
    case Options::Picture::Path:
        break;
    }
    return savePicture(options.out, PathPictureSize, theme, [&](QPainter& painter, const Theme& colors) {
        drawPathPicture(painter, colors, options);
    });
}

} // namespace

int main(int argc, char** argv)
{
    goWithoutDisplay();
    qInstallMessageHandler(keepQtQuiet);
    const QGuiApplication application(argc, argv);
    const ParsedOptions parsed = parseOptions(QGuiApplication::arguments());
    if (!parsed.error.isEmpty()) {
        return fail(WrongUsage, parsed.error);
    }
    if (!parsed.help.isEmpty()) {
        std::fputs(qPrintable(parsed.help), stdout);
        return Done;
    }
    if (!TurningPath(parsed.options, parsed.options.heading).isFinite()) {
        return fail(WrongUsage, QStringLiteral("the path leaves the numbers that can be drawn"));
    }
    if (!save(parsed.options)) {
        return fail(NotWritten, QStringLiteral("cannot write %1").arg(parsed.options.out));
    }
    return Done;
}
