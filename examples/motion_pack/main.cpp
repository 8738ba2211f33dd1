#include "Failure.h"
#include "FolderSurvey.h"
#include "Output.h"
#include "Watcher.h"

#include <Velor.Base/KelbDeviceSource.h>
#include <Velor.Base/VelorLog.h>
#include <Velor.Base/VelorVersion.h>
#include <Velor.Base/VelorXxHash.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDateTime>
#include <QtCore/QDebug>
#include <QtCore/QLocale>
#include <QtCore/QRegularExpression>

#include <cstdio>

/// \file
/// motion_pack: packs a folder into a zip archive, with a manifest of digests beside it.

using namespace Qt::StringLiterals;

namespace {

constexpr int WrongUsage = 2;

constexpr const char* Description =
    "Packs all files of a folder, links followed, into a zip archive with folder names in lower case, and\n"
    "writes the XXH64 digest of each into ARCHIVE.xxh64, for 'xxhsum -c' in the folder. An older pair is\n"
    "replaced at the end: after a failure or an interruption it is as before, and a process that is killed\n"
    "leaves a folder ARCHIVE.??????, with what is missing in its place.";

void log(VelorLog::Level level, const QString& text)
{
    if (VelorLogManager::getSingleton().getDefaultLog() != nullptr) {
        VelorLogManager::getSingleton().logMessage(text.toStdString(), level, true);
    }
}

/// One line on standard error, whatever a file is called, and in the log.
void report(VelorLog::Level level, const QString& text)
{
    const QString line = QDebug::toString(text).sliced(1).chopped(1); // Escaped, and without the quotes.
    std::fprintf(stderr, "motion_pack: %s\n", qUtf8Printable(line));
    log(level, line);
}

void parse(QCommandLineParser& options, const QStringList& words)
{
    options.setApplicationDescription(QString::fromLatin1(Description));
    options.addPositionalArgument(u"FOLDER"_s, u"The folder to pack."_s);
    options.addPositionalArgument(u"ARCHIVE"_s, u"The zip file."_s);
    options.addOptions({
        {{u"x"_s, u"exclude"_s}, u"Leave out files whose name matches this wildcard."_s, u"PATTERN"_s},
        {u"store"_s,
         u"Do not compress files with this extension. The first takes the place of gif, jpeg, jpg and png."_s,
         u"EXT"_s},
        {u"log-dir"_s, u"Write a log into this folder; without it, there is none."_s, u"DIR"_s},
        {{u"q"_s, u"quiet"_s}, u"Print nothing but warnings and errors."_s},
    });
    options.addHelpOption();
    options.addVersionOption();
    if (!options.parse(words)) {
        throw Failure{options.errorText(), WrongUsage};
    }
    options.process(words); // Help and version.
    const QStringList names = options.positionalArguments();
    if (names.size() != 2 || QFileInfo(names.last()).fileName().isEmpty()) {
        throw Failure{u"one FOLDER and one ARCHIVE are needed"_s, WrongUsage};
    }
    for (const QString& pattern : options.values(u"exclude"_s)) {
        // One with a slash would silently match nothing.
        if (!QRegularExpression::fromWildcard(pattern).isValid() || pattern.contains(u'/')) {
            throw Failure{u"'%1' is no wildcard for file names"_s.arg(pattern), WrongUsage};
        }
    }
}

/// Returns the new log's path. Unlike with VelorLogManager::setupDefaultLog, other logs in the folder stay.
QString startLog(const QString& folder)
{
    const QString name = QDateTime::currentDateTime().toString(u"'motion_pack_'yyyy-MM-dd_hh-mm-ss"_s);
    QFile file(QFileInfo(folder).absoluteFilePath() + u'/' + name + u".log"_s);
    if (!file.open(QIODevice::WriteOnly)) {
        throw Failure{u"no log can be written in '%1': %2"_s.arg(folder, file.errorString())};
    }
    VelorLogManager::getSingleton().createLog(name.toStdString(), folder.toStdString());
    return file.fileName();
}

/// Reads the folder, and reports what will be missing in the archive.
FolderSurvey lookAtFolder(const QCommandLineParser& options)
{
    const QString folder = options.positionalArguments().first();
    const QString archive = options.positionalArguments().last();
    QList<QFileInfo> ownFiles = {QFileInfo(archive), QFileInfo(Output::manifestOf(archive))};
    if (options.isSet(u"log-dir"_s)) {
        ownFiles.append(QFileInfo(startLog(options.value(u"log-dir"_s))));
    }
    FolderSurvey survey(folder, options.values(u"exclude"_s), ownFiles);
    for (const QString& name : survey.excluded) {
        log(VelorLog::Debug0, u"excluded: '%1'"_s.arg(name));
    }
    for (const QString& name : survey.leftOut) {
        report(VelorLog::Warning, u"not packed, as it has no content: '%1'"_s.arg(name));
    }
    if (survey.files.isEmpty()) {
        throw Failure{u"'%1' holds no file to pack"_s.arg(folder)};
    }
    return survey;
}

QByteArray digestOf(const FolderSurvey::File& file)
{
    QFile input(file.info.filePath());
    std::uint64_t digest = 0;
    if (input.open(QIODevice::ReadOnly)) {
        KelbDeviceSource source(&input);
        digest = VelorXxHash::fromSource(&source);
    }
    if (input.error() != QFile::NoError) {
        throw Failure{u"'%1' cannot be read: %2"_s.arg(file.name, input.errorString())};
    }
    return QByteArray::number(qulonglong(digest), 16).rightJustified(16, '0');
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

void packFile(const QString& entry, const FolderSurvey::File& file, Output& output)
{
    const bool isAdded = output.zip().addFile(entry, file.info.filePath());
    if (!isAdded) {
        digestOf(file); // Raises Failure if it is the file that cannot be read.
    }
    const QFileInfo now(file.info.filePath());
    if (now.size() != file.info.size() || now.lastModified() != file.info.lastModified()) {
        throw Failure{u"'%1' changed while it was packed"_s.arg(file.name)};
    }
    if (!isAdded) {
        output.failToWrite();
    }
}

/// Returns the manifest.
QByteArray pack(const FolderSurvey& survey, Output& output, bool isQuiet)
{
    Watcher watcher(output.temporaryFolder(), survey.bytes, isQuiet);
    QByteArray manifest;
    qint64 packed = 0;
    QString name;
    try {
        for (const QString& folder : survey.folders) {
            name = folder;
            if (!output.zip().addFolderEntry(folder)) {
                output.failToWrite();
            }
        }
        for (const auto& [entry, file] : survey.files.asKeyValueRange()) {
            name = file.name;
            watcher.setProgress(packed, file.info.size());
            manifest += manifestLine(digestOf(file), name);
            packFile(entry, file, output);
            packed += file.info.size();
        }
    } catch (const std::exception& error) {
        const QString reason = QString::fromUtf8(error.what());
        throw Failure{u"'%1' cannot be the name of an archive's entry (%2)"_s.arg(name, reason)};
    }
    watcher.setProgress(packed, 0);
    return manifest;
}

void run(const QCommandLineParser& options)
{
    const QString archive = options.positionalArguments().last();
    const bool isQuiet = options.isSet(u"quiet"_s);
    const FolderSurvey survey = lookAtFolder(options);
    Watcher::catchSignals();
    Output output(archive);
    for (const QString& extension : options.values(u"store"_s)) {
        output.zip().addUncompressedExtension(extension);
    }
    output.finish(pack(survey, output, isQuiet));

    const QLocale locale = QLocale::c();
    const QString summary = u"packed %1 files, %2, into '%3', %4"_s.arg(
        QString::number(survey.files.size()), locale.formattedDataSize(survey.bytes), archive,
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
        report(VelorLog::Error, error.text);
        return error.exitCode;
    } catch (const std::exception& error) {
        report(VelorLog::Error, QString::fromUtf8(error.what()));
        return 1;
    }
}
