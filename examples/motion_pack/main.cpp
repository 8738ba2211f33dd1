#include "Output.h"
#include "Watcher.h"

#include <Velor.Base/KelbDeviceSource.h>
#include <Velor.Base/VelorLog.h>
#include <Velor.Base/VelorVersion.h>
#include <Velor.Base/VelorWildcard.h>
#include <Velor.Base/VelorXxHash.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDateTime>
#include <QtCore/QDebug>
#include <QtCore/QFile>
#include <QtCore/QLocale>
#include <QtCore/QMap>
#include <QtCore/QRegularExpression>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <new>

/// \file
/// motion_pack: packs a folder into a zip archive, with a manifest of digests beside it.

namespace fs = std::filesystem;
using namespace Qt::StringLiterals;

namespace {

constexpr int WrongUsage = 2;

constexpr const char* Description =
    "Packs all files of a folder, links followed, into a zip archive with folder names in lower case, and\n"
    "writes the XXH64 digest of each into ARCHIVE.xxh64, for 'xxhsum -c' in the folder. An older pair is\n"
    "replaced at the end: after a failure or an interruption it is as before, and a process that is killed\n"
    "leaves a folder ARCHIVE.??????, with what is missing in its place.";

struct Entry
{
    QString name;   ///< Relative to the folder; that of a folder ends with a slash.
    QFileInfo info; ///< Size and time as the survey found them.
};

/// What a folder holds, links followed, but for what the options exclude and what the program itself writes.
struct Survey
{
    QStringList excludes;
    QList<QFileInfo> ownFiles;
    QMap<QString, Entry> entries; ///< By the name in the archive.
    qint64 files = 0;
    qint64 bytes = 0;
};

void log(VelorLog::Level level, const QString& text)
{
    VelorLogManager& logs = VelorLogManager::getSingleton();
    if (logs.getDefaultLog() != nullptr) {
        logs.logMessage(text.toStdString(), level, true);
    }
}

/// One line on standard error, whatever a file is called, and in the log.
void report(VelorLog::Level level, const QString& text)
{
    const QString line = QDebug::toString(text).sliced(1).chopped(1); // Escaped, and without the quotes.
    std::fprintf(stderr, "motion_pack: %s\n", qUtf8Printable(line));
    log(level, line);
}

/// Names `subject` in the failure if `action` raises another exception.
void concerning(const QString& subject, const std::function<void()>& action)
{
    try {
        action();
    } catch (const fs::filesystem_error& error) {
        const QString reason = QString::fromStdString(error.code().message());
        throw Failure{u"'%1' cannot be read: %2"_s.arg(subject, reason)};
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) { // Of the zip library, which rejects the name.
        const QString reason = QString::fromUtf8(error.what());
        throw Failure{u"'%1' cannot be the name of an archive's entry (%2)"_s.arg(subject, reason)};
    }
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
    if (names.size() != 2 || names.first().isEmpty() || QFileInfo(names.last()).fileName().isEmpty()) {
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

void addEntry(Survey& survey, const Entry& entry)
{
    const QString name = VelorZipStream::entryName(QString(entry.name).replace(u'\\', u'/'));
    const auto other = survey.entries.constFind(name);
    // An archive keeps the first of two files, and does not report the other. Folders become one.
    if (other != survey.entries.cend() && (entry.info.isFile() || other->info.isFile())) {
        throw Failure{u"'%1' and '%2' would have one name in the archive"_s.arg(other->name, entry.name)};
    }
    survey.entries.insert(name, entry);
    if (entry.info.isFile()) {
        ++survey.files;
        survey.bytes += entry.info.size();
    }
}

void addPath(Survey& survey, const fs::directory_entry& path, const QString& name,
             const QList<fs::path>& above);

/// Adds what is in `folder`. A link to one of the folders `above` would lead in a circle.
void addFolder(Survey& survey, const fs::path& folder, const QString& prefix, QList<fs::path> above)
{
    above.append(fs::canonical(folder));
    for (const fs::directory_entry& path : fs::directory_iterator(folder)) {
        const std::u8string name = path.path().filename().u8string();
        const QString shown = prefix + QUtf8StringView(name).toString();
        if (!QUtf8StringView(name).isValidUtf8()) {
            throw Failure{u"'%1' cannot be packed: its name is no valid UTF-8"_s.arg(shown)};
        }
        concerning(shown, [&] { addPath(survey, path, shown, above); });
    }
}

void addPath(Survey& survey, const fs::directory_entry& path, const QString& name,
             const QList<fs::path>& above)
{
    const QFileInfo info(path.path());
    std::error_code error;
    const fs::file_type type = path.status(error).type();
    if (type == fs::file_type::none && error != std::errc::too_many_symbolic_link_levels) {
        throw fs::filesystem_error({}, error);
    }
    if (type == fs::file_type::directory && !above.contains(fs::canonical(path))) {
        addEntry(survey, {name + u'/', info});
        addFolder(survey, path, name + u'/', above);
    } else if (type != fs::file_type::regular) {
        report(VelorLog::Warning, u"not packed, as it has no content: '%1'"_s.arg(name));
    } else if (!info.isFile()) { // It has vanished meanwhile.
        throw fs::filesystem_error({}, std::make_error_code(std::errc::no_such_file_or_directory));
    } else if (VelorWildcard::check(name, survey.excludes, Qt::CaseInsensitive)) {
        log(VelorLog::Debug0, u"excluded: '%1'"_s.arg(name));
    } else if (!survey.ownFiles.contains(info)) {
        addEntry(survey, {name, info});
    }
}

Survey lookAtFolder(const QCommandLineParser& options)
{
    const QString folder = options.positionalArguments().first();
    const QString archive = options.positionalArguments().last();
    Survey survey;
    survey.excludes = options.values(u"exclude"_s);
    survey.ownFiles = {QFileInfo(archive), QFileInfo(Output::manifestOf(archive))};
    if (options.isSet(u"log-dir"_s)) {
        survey.ownFiles.append(QFileInfo(startLog(options.value(u"log-dir"_s))));
    }
    concerning(folder, [&] { addFolder(survey, QFileInfo(folder).filesystemFilePath(), {}, {}); });
    if (survey.files == 0) {
        throw Failure{u"'%1' holds no file to pack"_s.arg(folder)};
    }
    return survey;
}

/// The line for a file, with a line break in its name escaped as checksum tools do it.
QByteArray manifestLine(const Entry& file)
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
    const QByteArray digits = QByteArray::number(qulonglong(digest), 16).rightJustified(16, '0');
    QByteArray name = file.name.toUtf8();
    if (!name.contains('\n')) {
        return digits + "  " + name + '\n';
    }
    return '\\' + digits + "  " + name.replace('\\', "\\\\").replace('\n', "\\n") + '\n';
}

void addFile(Output& output, const QString& entry, const Entry& file)
{
    const bool isAdded = output.zip().addFile(entry, file.info.filePath());
    if (!isAdded) {
        manifestLine(file); // Raises Failure if it is the file that cannot be read.
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
QByteArray pack(const Survey& survey, Output& output, bool isQuiet)
{
    Watcher watcher(output.temporaryFolder(), survey.bytes, isQuiet);
    QByteArray manifest;
    for (auto at = survey.entries.cbegin(); at != survey.entries.cend(); ++at) {
        concerning(at->name, [&] {
            if (at->info.isFile()) {
                manifest += manifestLine(*at);
                addFile(output, at.key(), *at);
                watcher.filePacked(at->info.size());
            } else if (!output.zip().addFolderEntry(at.key())) {
                output.failToWrite();
            }
        });
    }
    return manifest;
}

void run(const QCommandLineParser& options)
{
    const Survey survey = lookAtFolder(options);
    const QString archive = options.positionalArguments().last();
    const bool isQuiet = options.isSet(u"quiet"_s);
    Watcher::catchSignals();
    Output output(archive);
    for (const QString& extension : options.values(u"store"_s)) {
        output.zip().addUncompressedExtension(extension);
    }
    output.finish(pack(survey, output, isQuiet));

    const QLocale locale = QLocale::c();
    const QString summary = u"packed %1 files, %2, into '%3', %4"_s.arg(
        QString::number(survey.files), locale.formattedDataSize(survey.bytes), archive,
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
