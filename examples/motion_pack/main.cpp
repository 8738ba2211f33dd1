#include "Failure.h"
#include "FolderSurvey.h"
#include "Output.h"
#include "Watcher.h"

#include <Velor.Base/VelorLog.h>
#include <Velor.Base/VelorVersion.h>
#include <Velor.Base/VelorXxHash.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QLocale>
#include <QtCore/QRegularExpression>

#include <algorithm>
#include <cstdio>

/// \file
/// motion_pack: packs a folder into a zip archive, with a manifest of digests beside it.

namespace {

constexpr int ExitFailure = 1;
constexpr int ExitUsage = 2;
constexpr qsizetype BlockSize = 1 << 20;

constexpr const char* Description =
    "Packs all files of a folder, links followed, into a zip archive, and writes a manifest beside it:\n"
    "ARCHIVE.xxh64 has the XXH64 digest of each file, for 'xxhsum -c' in the folder. The archive has folder\n"
    "names in lower case. What has no content (pipes, devices, dangling links) gets a warning.\n"
    "\n"
    "An older archive and its manifest are replaced at the end. After a failure or an interruption they are\n"
    "as before; a process that is killed leaves a folder ARCHIVE.??????, with what is missing in its place.";

void log(VelorLog::Level level, const QString& text)
{
    if (VelorLogManager::getSingleton().getDefaultLog() != nullptr) {
        VelorLogManager::getSingleton().logMessage(text.toStdString(), level, true);
    }
}

/// One line on standard error, whatever a file is called, and in the log.
void report(VelorLog::Level level, const QString& text)
{
    QString line;
    for (const QChar letter : text) {
        line += letter.category() == QChar::Other_Control
                    ? QStringLiteral("\\x%1").arg(uint(letter.unicode()), 2, 16, QLatin1Char('0'))
                    : QString(letter);
    }
    std::fprintf(stderr, "motion_pack: %s\n", qUtf8Printable(line));
    log(level, line);
}

QString latin1(const char* text) { return QString::fromLatin1(text); }

/// A pattern with a slash would silently match nothing.
void requireWildcard(const QString& pattern)
{
    if (!QRegularExpression::fromWildcard(pattern).isValid() || pattern.contains(u'/')) {
        throw Failure(QStringLiteral("'%1' is no wildcard for file names").arg(pattern), ExitUsage);
    }
}

void parse(QCommandLineParser& options, const QStringList& words)
{
    options.setApplicationDescription(latin1(Description));
    options.addPositionalArgument(latin1("FOLDER"), latin1("The folder to pack."));
    options.addPositionalArgument(latin1("ARCHIVE"), latin1("The zip file."));
    options.addOptions({
        {{latin1("x"), latin1("exclude")},
         latin1("Leave out files whose name matches this wildcard."),
         latin1("PATTERN")},
        {latin1("store"),
         latin1("Do not compress files with this extension. The first takes the place of gif, "
                "jpeg, jpg and png."),
         latin1("EXT")},
        {latin1("log-dir"), latin1("Write a log into this folder; without it, there is none."),
         latin1("DIR")},
        {{latin1("q"), latin1("quiet")}, latin1("Print nothing but warnings and errors.")},
    });
    const QCommandLineOption help = options.addHelpOption();
    const QCommandLineOption version = options.addVersionOption();
    if (!options.parse(words)) {
        throw Failure(options.errorText(), ExitUsage);
    }
    if (options.isSet(help)) {
        options.showHelp();
    }
    if (options.isSet(version)) {
        options.showVersion();
    }
    const QStringList names = options.positionalArguments();
    if (names.size() != 2 || QFileInfo(names.last()).fileName().isEmpty()) {
        throw Failure(latin1("one FOLDER and one ARCHIVE are needed"), ExitUsage);
    }
    for (const QString& pattern : options.values(latin1("exclude"))) {
        requireWildcard(pattern);
    }
}

/// Returns the new log's path. Other logs in the folder stay.
QString startLog(const QString& folder)
{
    const QString name = QDateTime::currentDateTime().toString(latin1("'motion_pack_'yyyy-MM-dd_hh-mm-ss"));
    QFile file(QFileInfo(folder).absoluteFilePath() + u'/' + name + latin1(".log"));
    if (!file.open(QIODevice::WriteOnly)) {
        throw Failure(QStringLiteral("no log can be written in '%1': %2").arg(folder, file.errorString()));
    }
    VelorLogManager::getSingleton().createLog(name.toStdString(), folder.toStdString(), true);
    return file.fileName();
}

/// Reads the folder, and reports what will be missing in the archive.
FolderSurvey lookAtFolder(const QCommandLineParser& options)
{
    const QString folder = options.positionalArguments().first();
    const QString archive = options.positionalArguments().last();
    QList<QFileInfo> ownFiles = {QFileInfo(archive), QFileInfo(Output::manifestOf(archive))};
    if (options.isSet(latin1("log-dir"))) {
        ownFiles.append(QFileInfo(startLog(options.value(latin1("log-dir")))));
    }
    FolderSurvey survey(folder, options.values(latin1("exclude")), ownFiles);
    for (const QString& name : survey.excluded) {
        log(VelorLog::Debug0, QStringLiteral("excluded: '%1'").arg(name));
    }
    for (const QString& name : survey.leftOut) {
        report(VelorLog::Warning, QStringLiteral("not packed, as it has no content: '%1'").arg(name));
    }
    if (survey.files.isEmpty()) {
        throw Failure(QStringLiteral("'%1' holds no file to pack").arg(folder));
    }
    return survey;
}

QByteArray digestOf(const FolderSurvey::File& file)
{
    QFile input(file.path);
    VelorXxHash hash;
    QByteArray block(BlockSize, Qt::Uninitialized);
    qint64 count = input.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ? 1 : -1;
    while (count > 0) {
        count = input.read(block.data(), block.size());
        hash.addBytes(block.constData(), static_cast<std::uint64_t>(std::max<qint64>(count, 0)));
    }
    if (count < 0) {
        throw Failure(QStringLiteral("'%1' cannot be read: %2").arg(file.name, input.errorString()));
    }
    return QByteArray::number(qulonglong(hash.hash()), 16).rightJustified(16, '0');
}

/// A name with a line break is escaped as checksum tools do it.
QByteArray manifestLine(const QByteArray& digest, const QString& name)
{
    QByteArray text = name.toUtf8();
    if (!text.contains('\n')) {
        return digest + "  " + text + '\n';
    }
    return '\\' + digest + "  " + text.replace('\\', "\\\\").replace('\n', "\\n") + '\n';
}

/// Adds by `add`. A name that a zip archive must not have is an exception of the library.
template <typename Add>
bool addEntry(const QString& name, const Add& add)
{
    try {
        return add();
    } catch (const std::exception& error) {
        throw Failure(QStringLiteral("'%1' cannot be the name of an archive's entry (%2)")
                          .arg(name, QString::fromUtf8(error.what())));
    }
}

void packFile(const FolderSurvey::File& file, Output& output)
{
    const bool isAdded = addEntry(file.name, [&] { return output.zip().addFile(file.entry, file.path); });
    if (!isAdded) {
        digestOf(file); // Raises Failure if it is the file that cannot be read.
    }
    const QFileInfo now(file.path);
    if (now.size() != file.size || now.lastModified() != file.modified) {
        throw Failure(QStringLiteral("'%1' changed while it was packed").arg(file.name));
    }
    if (!isAdded) {
        output.failToWrite();
    }
}

/// Returns the manifest.
QByteArray pack(const FolderSurvey& survey, Output& output, Watcher& watcher)
{
    for (const QString& folder : survey.folders) {
        if (!addEntry(folder, [&] { return output.zip().addFolderEntry(folder); })) {
            output.failToWrite();
        }
    }
    QByteArray manifest;
    qint64 packed = 0;
    for (const FolderSurvey::File& file : survey.files) {
        manifest += manifestLine(digestOf(file), file.name);
        watcher.setProgress(packed, file.size);
        packFile(file, output);
        packed += file.size;
    }
    watcher.setProgress(packed, 0);
    return manifest;
}

void run(const QCommandLineParser& options)
{
    const QString archive = options.positionalArguments().last();
    const bool isQuiet = options.isSet(latin1("quiet"));
    const FolderSurvey survey = lookAtFolder(options);
    Watcher::catchSignals();
    Output output(archive);
    for (const QString& extension : options.values(latin1("store"))) {
        output.zip().addUncompressedExtension(extension);
    }
    Watcher watcher(output.temporaryFolder(), survey.bytes, isQuiet);
    const QByteArray manifest = pack(survey, output, watcher);
    watcher.stop();
    output.finish(manifest);

    const QLocale locale = QLocale::c();
    const QString summary =
        QStringLiteral("packed %1 files, %2, into '%3', %4")
            .arg(QString::number(survey.files.size()), locale.formattedDataSize(survey.bytes), archive,
                 locale.formattedDataSize(QFileInfo(archive).size()));
    log(VelorLog::Info, summary);
    if (!isQuiet) {
        std::printf("%s\n", qUtf8Printable(summary));
    }
}

} // namespace

int main(int argc, char* argv[])
{
    // Standard error is for the program's own lines.
    qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { log(VelorLog::Debug0, text); });
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(VelorVersion::current().toString());
    try {
        QCommandLineParser options;
        parse(options, QCoreApplication::arguments());
        run(options);
        return 0;
    } catch (const Failure& error) {
        report(VelorLog::Error, QString::fromUtf8(error.what()));
        return error.exitCode;
    } catch (const std::exception& error) {
        report(VelorLog::Error, QString::fromUtf8(error.what()));
        return ExitFailure;
    }
}
