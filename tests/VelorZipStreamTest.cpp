#include "support/TestHelpers.h"

#include <Velor.Base/VelorZipStream.h>

#include <Poco/Exception.h>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QProcess>

#include <gmock/gmock.h>

#include <limits>
#if __has_include(<sys/resource.h>)
#include <sys/stat.h>
#endif

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

QString q(const char* utf8) { return QString::fromUtf8(utf8); }

/// What two independent programs find in an archive: one line a record, in the order of writing, "name method
/// content" (method 0 is stored, 8 deflated). A damaged archive gives a line that no test expects.
std::vector<std::string> read(const QString& archive)
{
    static const QString Script =
        q("faults=$(7z t \"$0\" 2>&1) || echo \"$faults\"; python3 -c '\n"
          "import sys, zipfile\n"
          "z = zipfile.ZipFile(sys.argv[1])\n"
          "for i in sorted(z.infolist(), key=lambda i: i.header_offset):\n"
          "    print(i.filename, i.compress_type, z.read(i).decode()[:20])' \"$0\"");
    QProcess reader;
    reader.start(q("sh"), {q("-c"), Script, archive});
    reader.waitForFinished(-1);
    std::vector<std::string> lines;
    for (const QByteArray& line : reader.readAllStandardOutput().trimmed().split('\n')) {
        lines.push_back(line.trimmed().toStdString());
    }
    return lines;
}

struct VelorZipStreamTest : testing::Test
{
    TestFolder temporary;
    QString archive = temporary.path(q("\xC3\x84 \xF0\x9F\x92\x83.zip"));
    QString root = temporary.path(q("root"));

    void put(const char* relative, const std::string& content = "x")
    {
        const QString path = root + u'/' + q(relative);
        QDir().mkpath(QFileInfo(path).path());
        writeFile(path, content);
    }

    void expectInert(VelorZipStream& zip)
    {
        EXPECT_FALSE(zip.addFile(q("later"), "x", 1));
        EXPECT_FALSE(zip.addFile(q("later"), root + q("/a.txt")));
        EXPECT_FALSE(zip.addFolderEntry(q("later")));
        EXPECT_FALSE(zip.addFolder(root, true));
    }

    bool pack(int folderEntries)
    {
        VelorZipStream zip(archive);
        bool isGood = zip.addFile(q("memory.txt"), "memory", 6);
        for (int i = 0; i < folderEntries; ++i) {
            isGood = zip.addFolderEntry(QString::number(i).leftJustified(250, u'n')) && isGood;
        }
        return isGood;
    }
};

TEST_F(VelorZipStreamTest, NamesAreTheSameOnEverySystemAndRejectedOnesRaise)
{
    std::vector<std::string> records = {"foo/ 0", "foo/bar/ 0"};
    {
        VelorZipStream zip(archive);
        EXPECT_TRUE(zip.addFolderEntry(q("Foo\\Bar/")));
        EXPECT_TRUE(zip.addFolderEntry(q("FOO")));
        for (const auto& [name, entry] : {std::pair("Models\\Hero.fbx", "models/Hero.fbx"),
                                          std::pair("Last\\Backslash/Wins.txt", "last/Backslash/Wins.txt"),
                                          std::pair("\xC3\x84/\xC3\x84.txt", "\xC3\xA4/\xC3\x84.txt")}) {
            EXPECT_TRUE(zip.addFile(q(name), "x", 1)) << name;
            EXPECT_EQ(VelorZipStream::entryName(q(name)), q(entry));
            records.push_back(entry + std::string(" 8 x"));
        }
        EXPECT_TRUE(zip.hasFile(q("last\\Backslash/Wins.txt")));
        for (const char* name : {"/leading separator", "a:b", "a/../../out"}) {
            EXPECT_THROW(zip.addFile(q(name), "x", 1), Poco::Exception) << name;
            EXPECT_FALSE(zip.hasFile(q(name))) << name;
        }
    }
    const auto found = read(archive);
    EXPECT_THAT(found, testing::IsSupersetOf(records));
    EXPECT_EQ(std::count(found.begin(), found.end(), "foo/ 0"), 1);
}

TEST_F(VelorZipStreamTest, FolderBecomesLowerCaseFoldersThenFilesWithoutWhatItMustNotPack)
{
    for (const char* name : {"a.txt", "no dot", ".hidden.txt", "skip.TMP", "Sub/b.txt", "Sub/Deep/C.PNG"}) {
        put(name);
    }
    struct : VelorPercentListener
    {
        std::vector<int> percents;
        void onPercent(int percent) override { percents.push_back(percent); }
    } listener;
    QFile::link(root, root + q("/Sub/loop"));
    archive = root + q("/own.zip");
    {
        VelorZipStream zip(archive);
        std::filesystem::create_hard_link(archive.toStdString(), (root + q("/own link.zip")).toStdString());
        EXPECT_TRUE(zip.addFolder(root, true, {q("*.tmp")}, &listener, 100));
        EXPECT_TRUE(zip.hasFile(q("sub/deep/C.PNG")));
        EXPECT_FALSE(zip.hasFile(q("Sub/Deep/C.PNG")));
        EXPECT_FALSE(zip.hasFile(q("sub/")));
    }
    EXPECT_THAT(listener.percents, ElementsAre(33, 66, 100));
    const auto records = read(archive);
    EXPECT_THAT(records, UnorderedElementsAre("sub/ 0", "sub/deep/ 0", "sub/loop/ 0", "a.txt 8 x",
                                              "sub/b.txt 8 x", "sub/deep/C.PNG 0 x"));
    EXPECT_TRUE(std::is_partitioned(records.begin(), records.end(),
                                    [](const auto& r) { return r.ends_with("/ 0"); }));
    const int largest = std::numeric_limits<int>::max();
    EXPECT_TRUE(VelorZipStream(archive).addFolder(root, false, {}, &listener, largest));
    EXPECT_EQ(listener.percents.back(), largest) << "its float is beyond the range of an int";
    EXPECT_THAT(read(archive), UnorderedElementsAre("sub/ 0", "a.txt 8 x", "skip.TMP 8 x"));
}

TEST_F(VelorZipStreamTest, StoreExtensionsReplaceTheDefaultAndHoldForLaterEntries)
{
    struct Stream : VelorZipStream
    {
        using VelorZipStream::VelorZipStream, VelorZipStream::canCompress;
    };
    {
        Stream zip(archive);
        EXPECT_TRUE(zip.addFile(q("1.png"), "x", 1) && zip.addFile(q("1.gz"), "x", 1));
        zip.addUncompressedExtension(q("a/b.tar.GZ"));
        EXPECT_TRUE(zip.canCompress(q("2.png")) && !zip.canCompress(q("2.GZ")));
        EXPECT_TRUE(zip.addFile(q("2.png"), "x", 1) && zip.addFile(q("2.GZ"), "x", 1));
        EXPECT_TRUE(zip.addFile(q("empty.txt"), nullptr, 0));
    }
    EXPECT_THAT(read(archive),
                UnorderedElementsAre("1.png 0 x", "1.gz 8 x", "2.png 8 x", "2.GZ 0 x", "empty.txt 0"));
}

TEST_F(VelorZipStreamTest, InputThatCannotBePackedLosesTheArchiveForGood)
{
    put("a.txt");
    // The last two are read in part: one fails, one has fewer bytes than its size.
    for (const QString& input :
         {root + q("/missing"), root, archive, q("/proc/self/mem"), q("/sys/devices/system/cpu/online")}) {
        SCOPED_TRACE(input.toStdString());
        {
            VelorZipStream zip(archive);
            EXPECT_TRUE(zip.addFile(q("first"), "x", 1));
            EXPECT_FALSE(zip.addFile(q("bad"), input));
            EXPECT_FALSE(zip.hasFile(q("bad")));
            EXPECT_TRUE(zip.isOpen());
            expectInert(zip);
        }
        EXPECT_FALSE(QFile::exists(archive));
    }
    EXPECT_TRUE(VelorZipStream(archive).addFile(QString(65535, u'n'), "x", 1));
    EXPECT_FALSE(VelorZipStream(archive).addFile(QString(65536, u'n'), "x", 1))
        << "a name too long for its record";
    EXPECT_FALSE(QFile::exists(archive));
}

TEST_F(VelorZipStreamTest, ArchiveThatCannotBeCreatedIsInert)
{
    put("a.txt");
    for (const QString& path : {root, root + q("/missing/out.zip"), QString()}) {
        VelorZipStream zip(path);
        EXPECT_FALSE(zip.isOpen());
        expectInert(zip);
        zip.addUncompressedExtension(q("txt"));
    }
}

// Where a process can limit the size of its files.
#if __has_include(<sys/resource.h>)

TEST_F(VelorZipStreamTest, PipesDevicesAndLinksToThemStayOutOfAFolder)
{
    put("a.txt");
    mkfifo((root + q("/pipe.txt")).toStdString().c_str(), 0600);
    int links = 0;
    for (const char* end : {"pipe.txt", "/dev/zero", "/dev/null", "link 3.txt", "nowhere.txt", "a.txt"}) {
        QFile::link(q(end), root + q("/link %1.txt").arg(links++));
    }
    EXPECT_TRUE(VelorZipStream(archive).addFolder(root, true));
    EXPECT_THAT(read(archive), UnorderedElementsAre("a.txt 8 x", "link 5.txt 8 x"));
}

TEST_F(VelorZipStreamTest, FolderWithANameThatIsNoTextIsRefusedIfThatWouldBePacked)
{
    for (const auto& [name, isPackedOtherwise] :
         {std::pair("\xFF.txt", true), std::pair("\xC3/a.txt", true), std::pair("Sub/Deep/\xE4/a.txt", true),
          std::pair("no full stop \xFF", false), std::pair(".hidden \xFF.txt", false)}) {
        SCOPED_TRACE(name);
        const std::filesystem::path path = root.toStdString() + '/' + name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << 'x';
        EXPECT_EQ(VelorZipStream(archive).addFolder(root, true), !isPackedOtherwise);
        EXPECT_EQ(QFile::exists(archive), !isPackedOtherwise);
        std::filesystem::remove_all(root.toStdString());
    }
}

TEST_F(VelorZipStreamTest, FileWithoutASizeIsPackedWhole)
{
    QFile file(q("/proc/self/comm"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(VelorZipStream(archive).addFile(q("name"), file.fileName()));
    EXPECT_THAT(read(archive), ElementsAre("name 8 " + file.readAll().trimmed().toStdString()));
}

TEST_F(VelorZipStreamTest, FolderWithAFileThatCannotBeReadIsRefused)
{
    put("a.txt");
    QFile::link(q("/proc/self/mem"), root + q("/mem.txt"));
    EXPECT_FALSE(VelorZipStream(archive).addFolder(root, false));
}

TEST_F(VelorZipStreamTest, DiskThatFillsLeavesNoArchiveAndNoException)
{
    constexpr int MoreThanTheBufferHolds = 5000;
    EXPECT_TRUE(pack(MoreThanTheBufferHolds));
    const qint64 size = QFileInfo(archive).size();
    for (qint64 limit = 0; limit < size; limit += size / 8) {
        bool isGood = false;
        EXPECT_NO_THROW(isGood = (FileSizeLimit(std::uint64_t(limit)), pack(MoreThanTheBufferHolds)))
            << limit;
        EXPECT_TRUE(limit > 0 || !isGood);
        EXPECT_FALSE(QFile::exists(archive)) << limit;
    }
}

#endif

TEST_F(VelorZipStreamTest, NeitherEntriesNorBytesAreCountedAsInOldArchives)
{
    EXPECT_TRUE(pack(0x10000));
    const std::string version45("PK\3\4\x2D\0", 6); // That of ZIP64.
    EXPECT_EQ(fileBytes(archive).substr(0, 6), version45);
    EXPECT_THAT(read(archive), testing::SizeIs(0x10001));
}

} // namespace
