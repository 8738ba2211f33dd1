#pragma once

#include <Velor.Base/VelorZipStream.h>

#include <QtCore/QTemporaryDir>

#include <optional>

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
    const QString mManifest;
    QTemporaryDir mFolder;
    std::optional<VelorZipStream> mZip;
};
