#pragma once

#include <Velor.Base/VelorZipStream.h>

#include <QtCore/QTemporaryDir>

#include <optional>

/// Thrown to end the program with one line on standard error.
struct Failure
{
    QString text;
    int exitCode = 1;
};

/// An archive and the manifest beside it. Both are made in a temporary folder there and put in place at the
/// end: until then, and after a failure, the pair of the run before stands. Whenever the process ends, a
/// manifest belongs to the archive that it stands beside.
class Output
{
public:
    static QString manifestOf(const QString& archive) { return archive + QStringLiteral(".xxh64"); }

    explicit Output(const QString& archive);

    QString temporaryFolder() const { return mFolder.path(); }
    VelorZipStream& zip() { return *mZip; }

    /// Finishes the archive and puts it in place with this manifest.
    void finish(const QByteArray& manifest);

    /// The archive cannot be written: raises Failure with the reason.
    [[noreturn]] void failToWrite() const;

private:
    void putInPlace();

    const QString mArchive;
    QTemporaryDir mFolder;
    const QString mNewArchive = mFolder.filePath(QStringLiteral("new.zip"));
    const QString mNewManifest = mFolder.filePath(QStringLiteral("new.xxh64"));
    const QString mProbe = mFolder.filePath(QStringLiteral("probe"));
    std::optional<VelorZipStream> mZip;
};
