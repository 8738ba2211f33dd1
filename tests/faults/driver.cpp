// Does one operation of the library: driver OPERATION PATH... The exit code is what the library reported.

#include <Velor.Base/KelbIOSource.h>
#include <Velor.Base/KelbSynonyms.h>
#include <Velor.Base/VelorDebugTrace.h>
#include <Velor.Base/VelorFile.h>
#include <Velor.Base/VelorIODevice.h>
#include <Velor.Base/VelorLog.h>
#include <Velor.Base/VelorXxHash.h>
#include <Velor.Base/VelorZipStream.h>

#include <QtCore/QList>
#include <QtCore/QString>

#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using Paths = QList<QString>;

enum Outcome
{
    Succeeded = 0,
    Failed = 1,
    WrongData = 2, ///< Success was reported for it.
    OutOfMemory = 3
};

Outcome outcome(bool reported) { return reported ? Succeeded : Failed; }

Outcome replaceFile(const Paths& paths)
{
    return outcome(VelorFile::replaceFile(paths[0], paths[1], paths[2]));
}

Outcome packArchive(const Paths& paths)
{
    VelorZipStream zip(paths[0]);
    return outcome(zip.addFile(u"Disk/file.bin"_s, paths[1]) && zip.addFile(u"memory.txt"_s, "memory", 6) &&
                   zip.addFolderEntry(u"Empty"_s) && zip.addFolder(paths[2], true));
}

Outcome writeLog(const Paths& paths)
{
    VelorLog log(paths[0].toStdString());
    for (int i = 0; i < 6; ++i) {
        log.stream(i % 2 == 0 ? VelorLog::Error : VelorLog::Warning) << "line " << i;
    }
    return Succeeded;
}

Outcome setupLog(const Paths& paths)
{
    const bool isSetUp = VelorLogManager::setupDefaultLog("Name", paths[0].toStdString());
    VelorLogManager::getSingleton().logWarning("line");
    return outcome(isSetUp);
}

Outcome saveTrace(const Paths& paths)
{
    const auto root = VelorDebugTrace::factory(u"faults"_s).getBaseNode(u"root"_s, u"a < b"_s);
    for (int i = 0; i < 8; ++i) {
        root->addGroup(QString::number(i), QString(9000, u'x'));
    }
    const bool isSaved = root->saveToFile(paths[0], u"file"_s);
    root->clear();
    return outcome(isSaved);
}

Outcome writeTypedFile(const Paths& paths)
{
    constexpr std::uint64_t Length = 60000;
    KelbFile file(paths[0].toUtf8().constData(), KelbFile::ModeReadWrite);
    VelorIODevice device(&file);
    const std::vector<TVec3d<float>> vectors(10000, TVec3d<float>{1, 2, 3});
    bool isWritten = device.write(u"hip"_s, true) && device.writeArray(vectors.data(), vectors.size());
    file.resize(Length);
    file.seekToEnd();
    isWritten = isWritten && !file.hasError() && file.tell() == Length && device.write(quat{1, 2, 3, 4});
    file.close();
    return outcome(isWritten && !file.hasError());
}

/// The file holds any number of the byte `x`; what cannot be read is 0.
Outcome loadBytes(const Paths& paths)
{
    unsigned char* bytes = nullptr;
    std::uint64_t size = 0;
    if (!VelorIODevice::loadBytesFrom(paths[0], bytes, size)) {
        return Failed;
    }
    const std::unique_ptr<unsigned char[]> owned(bytes);
    const std::string_view text(reinterpret_cast<char*>(bytes), size);
    const bool isPadded = text.find_first_not_of('\0', text.find_first_not_of('x')) == std::string_view::npos;
    return isPadded ? Succeeded : WrongData;
}

/// The file holds 50,000 times the byte `x`.
Outcome digestFile(const Paths& paths)
{
    KelbFile file(paths[0].toUtf8().constData(), KelbFile::ModeRead);
    const std::uint64_t digest = VelorXxHash::fromSource(&file);
    if (!file.isOpen() || file.hasError()) {
        return Failed;
    }
    const std::string content(50000, 'x');
    return digest == VelorXxHash::fromBytes(content.data(), content.size()) ? Succeeded : WrongData;
}

/// The file has many groups; "first" and "last" are words of the first and the last one.
Outcome loadSynonyms(const Paths& paths)
{
    KelbSynonyms synonyms;
    const bool isLoaded = synonyms.load(paths[0]);
    const bool hasFirst = synonyms.areSynonyms(u"first"_s, u"one"_s);
    const bool hasLast = synonyms.areSynonyms(u"last"_s, u"end"_s);
    return hasFirst == isLoaded && hasLast == isLoaded ? outcome(isLoaded) : WrongData;
}

const std::map<std::string_view, std::function<Outcome(const Paths&)>> Operations{
    {"replaceFile", replaceFile}, {"packArchive", packArchive}, {"writeLog", writeLog},
    {"setupLog", setupLog},       {"saveTrace", saveTrace},     {"writeTypedFile", writeTypedFile},
    {"loadBytes", loadBytes},     {"digestFile", digestFile},   {"loadSynonyms", loadSynonyms},
};

} // namespace

int main(int argc, char* argv[])
{
    Paths paths;
    for (int i = 2; i < argc; ++i) {
        paths.append(QString::fromLocal8Bit(argv[i]));
    }
    try {
        return Operations.at(argv[1])(paths);
    } catch (const std::bad_alloc&) {
        return OutOfMemory;
    }
}
