// Does one operation of the library: driver OPERATION FILE... The exit code is 0 or 1 for the true or false
// that the library reported, 2 where it reported success for wrong data, and 3 for a failed allocation.

#include <Velor.Base/KelbIOSource.h>
#include <Velor.Base/KelbSynonyms.h>
#include <Velor.Base/VelorDebugTrace.h>
#include <Velor.Base/VelorFile.h>
#include <Velor.Base/VelorIODevice.h>
#include <Velor.Base/VelorLog.h>
#include <Velor.Base/VelorMath.h>
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

enum Outcome
{
    Succeeded = 0,
    Failed = 1,
    Lied = 2,
    OutOfMemory = 3
};

using Names = QList<QString>;

Outcome outcome(bool reported) { return reported ? Succeeded : Failed; }

Outcome replaceFile(const Names& names)
{
    return outcome(VelorFile::replaceFile(names[0], names[1], names[2]));
}

Outcome packArchive(const Names& names)
{
    VelorZipStream zip(names[0]);
    return outcome(zip.addFile(u"Disk/file.bin"_s, names[1]) && zip.addFile(u"memory.txt"_s, "memory", 6) &&
                   zip.addFolderEntry(u"Empty"_s) && zip.addFolder(names[2], true));
}

class Counter : public LogListener
{
public:
    void onLogMessage(const std::string&, VelorLog::Level, bool, const std::string&, bool&) override
    {
        ++count;
    }
    int count = 0;
};

Outcome writeLog(const Names& names)
{
    constexpr int Lines = 6;
    Counter counter;
    VelorLog log(names[0].toStdString());
    log.addListener(&counter);
    for (int i = 0; i < Lines; ++i) {
        log.stream(i % 2 == 0 ? VelorLog::Error : VelorLog::Warning) << "line " << i;
    }
    return outcome(counter.count == Lines);
}

Outcome setupLog(const Names& names)
{
    const bool isSetUp = VelorLogManager::setupDefaultLog("Name", names[0].toStdString());
    VelorLogManager::getSingleton().logWarning("line");
    return outcome(isSetUp);
}

Outcome saveTrace(const Names& names)
{
    const auto root = VelorDebugTrace::factory(u"faults"_s).getBaseNode(u"root"_s, u"a < b"_s);
    for (int i = 0; i < 8; ++i) {
        root->addGroup(QString::number(i), QString(9000, u'x'));
    }
    const bool isSaved = root->saveToFile(names[0], u"trace.xml"_s);
    root->clear();
    return outcome(isSaved);
}

Outcome writeTypedFile(const Names& names)
{
    constexpr std::uint64_t Length = 60000;
    KelbFile file(names[0].toUtf8().constData(), KelbFile::ModeReadWrite);
    if (!file.isOpen()) {
        return Failed;
    }
    VelorIODevice device(&file);
    const std::vector<TVec3d<float>> vectors(10000, TVec3d<float>{1, 2, 3});
    bool isWritten = device.write(u"hip"_s, true) && device.writeArray(vectors.data(), vectors.size());
    file.resize(Length);
    isWritten = isWritten && file.isOpen() && !file.hasError() && file.size() == Length;
    file.seekToEnd();
    isWritten = isWritten && file.tell() == Length && device.write(quat{1, 2, 3, 4});
    file.close();
    return outcome(isWritten && !file.hasError());
}

/// The file holds any number of the byte `x`; what cannot be read is 0.
Outcome loadBytes(const Names& names)
{
    unsigned char* bytes = nullptr;
    std::uint64_t size = 0;
    if (!VelorIODevice::loadBytesFrom(names[0], bytes, size)) {
        return Failed;
    }
    const std::unique_ptr<unsigned char[]> owned(bytes);
    const std::string_view text(reinterpret_cast<char*>(bytes), size);
    const bool isPadded = text.find_first_not_of('\0', text.find_first_not_of('x')) == std::string_view::npos;
    return isPadded ? Succeeded : Lied;
}

/// The file holds 50,000 times the byte `x`.
Outcome digestFile(const Names& names)
{
    KelbFile file(names[0].toUtf8().constData(), KelbFile::ModeRead);
    if (!file.isOpen()) {
        return Failed;
    }
    const std::uint64_t digest = VelorXxHash::fromSource(&file);
    const QByteArray content(50000, 'x');
    const bool isRight = digest == VelorXxHash::fromBytes(content.constData(), std::uint64_t(content.size()));
    return file.hasError() ? Failed : isRight ? Succeeded : Lied;
}

/// The file has many groups; "first" and "last" are words of the first and the last one.
Outcome loadSynonyms(const Names& names)
{
    KelbSynonyms synonyms;
    const bool isLoaded = synonyms.load(names[0]);
    const bool hasFirst = synonyms.areSynonyms(u"first"_s, u"one"_s);
    const bool hasLast = synonyms.areSynonyms(u"last"_s, u"end"_s);
    return hasFirst == isLoaded && hasLast == isLoaded ? outcome(isLoaded) : Lied;
}

Outcome plotCurve(const Names& names)
{
    VelorMath::plotCurve(names[0]);
    return Succeeded;
}

const std::map<std::string, std::function<Outcome(const Names&)>> Operations{
    {"replaceFile", replaceFile}, {"packArchive", packArchive}, {"writeLog", writeLog},
    {"setupLog", setupLog},       {"saveTrace", saveTrace},     {"writeTypedFile", writeTypedFile},
    {"loadBytes", loadBytes},     {"digestFile", digestFile},   {"loadSynonyms", loadSynonyms},
    {"plotCurve", plotCurve},
};

} // namespace

int main(int argc, char* argv[])
{
    Names names;
    for (int i = 2; i < argc; ++i) {
        names.append(QString::fromLocal8Bit(argv[i]));
    }
    try {
        return Operations.at(argv[1])(names);
    } catch (const std::bad_alloc&) {
        return OutOfMemory;
    }
}
