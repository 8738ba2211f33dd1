#include <Velor.Base/VelorZipStream.h>

#include <Poco/Exception.h>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QtEndian>

#include <cstdint>
#include <cstdlib>

namespace {

/// Returns how many files the archive took.
int packNames(const QString& archive, const QByteArray& names)
{
    int taken = 0;
    VelorZipStream zip(archive);
    for (const QByteArray& name : names.split('\n')) {
        try {
            const QString text = QString::fromUtf8(name);
            taken += zip.addFile(text, name.constData(), std::uint64_t(name.size())) ? 1 : 0;
            zip.addFolderEntry(text);
        } catch (const Poco::Exception&) {
            continue; // the zip library rejected it
        }
    }
    return taken;
}

quint32 number(const QByteArray& bytes, qsizetype at)
{
    return qFromLittleEndian<quint32>(bytes.data() + at);
}
quint16 shortNumber(const QByteArray& bytes, qsizetype at)
{
    return qFromLittleEndian<quint16>(bytes.data() + at);
}

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

/// Walks the directory of a small archive from its end record, as a reader does, and returns how many files
/// it has. Each record must lead to a local one of the same name.
int filesInDirectory(const QByteArray& bytes)
{
    const qsizetype end = bytes.size() - 22;
    require(end >= 0 && number(bytes, end) == 0x06054b50);
    int files = 0;
    qsizetype at = number(bytes, end + 16);
    for (int count = shortNumber(bytes, end + 10); count > 0; --count) {
        require(number(bytes, at) == 0x02014b50);
        const QByteArray name = bytes.mid(at + 46, shortNumber(bytes, at + 28));
        const qsizetype local = number(bytes, at + 42);
        require(number(bytes, local) == 0x04034b50 && bytes.mid(local + 30, name.size()) == name);
        files += name.endsWith('/') ? 0 : 1;
        at += 46 + name.size() + shortNumber(bytes, at + 30) + shortNumber(bytes, at + 32);
    }
    return files;
}

} // namespace

/// Each line is the name of a file and of a folder: whatever names come, and whichever are rejected, the
/// archive must be one that can be read, with a file in it if any was taken.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QTemporaryDir Temporary;
    const QString archive = Temporary.filePath(QStringLiteral("names.zip"));
    const int taken = packNames(archive, QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    QFile file(archive);
    require(file.open(QIODevice::ReadOnly));
    const int found = filesInDirectory(file.readAll());
    require(found <= taken && (taken == 0) == (found == 0));
    return 0;
}
