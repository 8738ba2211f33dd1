#include "MainWindow.h"

#include <Velor.Base/VelorLog.h>
#include <Velor.Base/VelorVersion.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QStandardPaths>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyleFactory>
#include <QtWidgets/QToolTip>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

constexpr int ExitFailure = 1;
constexpr int ExitUsage = 2;

const QCommandLineOption
    CatalogueOption(QStringLiteral("catalogue"),
                    QStringLiteral("Show the clips of FILE instead of the sample catalogue."),
                    QStringLiteral("FILE"), QStringLiteral(":/catalogue.xml"));
const QCommandLineOption SynonymsOption(QStringLiteral("synonyms"),
                                        QStringLiteral("Search by the synonyms of FILE."),
                                        QStringLiteral("FILE"), QStringLiteral(":/synonyms.xml"));
const QCommandLineOption LogFolderOption(QStringLiteral("log-folder"),
                                         QStringLiteral("Write the log into FOLDER."),
                                         QStringLiteral("FOLDER"));
const QCommandLineOption DarkOption(QStringLiteral("dark"),
                                    QStringLiteral("Use a dark palette instead of the desktop's."));

/// --help and --version answer where there is no display, too.
void needNoDisplayForHelp(int argc, char* argv[])
{
    const auto asksForText = [](const char* argument) {
        const std::string_view text(argument);
        return text == "--help" || text == "--help-all" || text == "-h" || text == "--version" ||
               text == "-v";
    };
    if (std::any_of(argv + 1, argv + argc, asksForText)) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
}

/// Without a display Qt prints several lines and aborts: one line is enough for a user.
void reportNoDisplay(QtMsgType type, const QMessageLogContext&, const QString&)
{
    if (type == QtFatalMsg) {
        std::fputs("motion_browser: there is no display to open a window on\n", stderr);
        std::_Exit(ExitFailure);
    }
}

void useDarkPalette()
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QColor text(0xE6E6E6);
    QPalette dark(QColor(0x3A3D41), QColor(0x2B2D30));
    dark.setColor(QPalette::Base, QColor(0x1E1F22));
    dark.setColor(QPalette::AlternateBase, QColor(0x26282B));
    dark.setColor(QPalette::Highlight, QColor(0x2F65B5));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    dark.setColor(QPalette::PlaceholderText, QColor(0x9A9DA3));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        dark.setColor(role, text);
        dark.setColor(QPalette::Disabled, role, QColor(0x7A7D83));
    }
    dark.setColor(QPalette::ToolTipBase, dark.color(QPalette::Button));
    dark.setColor(QPalette::ToolTipText, text);
    QApplication::setPalette(dark);
    QToolTip::setPalette(dark);
}

int fail(const QString& message, int exitCode)
{
    std::fprintf(stderr, "motion_browser: %s\n", qPrintable(message));
    return exitCode;
}

/// The user's own folder for logs, unless another is asked for.
QString logFolder(const QCommandLineParser& parser)
{
    return parser.isSet(LogFolderOption)
               ? parser.value(LogFolderOption)
               : QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) +
                     QStringLiteral("/logs");
}

int browse(const QCommandLineParser& parser)
{
    ClipFinder finder;
    QString error;
    if (!finder.load(parser.value(CatalogueOption), parser.value(SynonymsOption), error)) {
        return fail(error, ExitFailure);
    }
    if (!VelorLogManager::setupDefaultLog("motion_browser", logFolder(parser).toStdString())) {
        return fail(QStringLiteral("cannot write a log into %1").arg(logFolder(parser)), ExitFailure);
    }
    VelorLog* log = VelorLogManager::getSingleton().getDefaultLog();
    log->setDebugOutputEnabled(false);
    if (parser.isSet(DarkOption)) {
        useDarkPalette();
    }

    MainWindow window(finder, log);
    window.show();
    log->stream(VelorLog::Info) << "The catalogue has " << finder.clips().size() << " clips";
    return QApplication::exec();
}

} // namespace

int main(int argc, char* argv[])
{
    needNoDisplayForHelp(argc, argv);
    qInstallMessageHandler(reportNoDisplay);
    const QApplication application(argc, argv);
    qInstallMessageHandler(nullptr);
    QApplication::setApplicationName(QStringLiteral("motion_browser"));
    QApplication::setApplicationVersion(VelorVersion::current().toString());

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Searches a catalogue of motions by tag and collects a playlist by drag and drop.\n"
                       "Clips can be dragged between the windows of several copies of this program."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({CatalogueOption, SynonymsOption, LogFolderOption, DarkOption});
    if (!parser.parse(QApplication::arguments())) {
        return fail(parser.errorText(), ExitUsage);
    }
    parser.process(application);
    if (!parser.positionalArguments().isEmpty()) {
        return fail(QStringLiteral("unexpected argument: %1").arg(parser.positionalArguments().first()),
                    ExitUsage);
    }
    return browse(parser);
}
