#include "support/TestHelpers.h"

#include <Velor.Base/VelorIODevice.h>

#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtXml/QDomDocument>
#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace std::string_literals;
using namespace Qt::StringLiterals;

const TVec3d<float> Vector{1.5f, -2.0f, 0.1f};
const quat Rotation{0.25f, -0.125f, 1.0f, 0.5f};
const QJsonDocument Json(QJsonArray{1, u"\u00E4"_s});

// As python3 packs them: struct.pack('<3f', 1.5, -2, 0.1), struct.pack('<4f', 0.5, 0.25, -0.125, 1).
const std::string VectorBytes = "\x00\x00\xC0\x3F\x00\x00\x00\xC0\xCD\xCC\xCC\x3D"s;
const std::string RotationBytes = "\x00\x00\x00\x3F\x00\x00\x80\x3E\x00\x00\x00\xBE\x00\x00\x80\x3F"s;
const std::string One = "\x00\x00\x80\x3F"s;
const std::string IdentityBytes =
    One + std::string(16, '\0') + One + std::string(16, '\0') + One + std::string(16, '\0') + One;
const std::string DomText = "<a>\n    <b x=\"1\">\xC3\xA4</b>\n</a>\n";
const std::string JsonText = "[\n    1,\n    \"\xC3\xA4\"\n]\n";

QDomDocument dom()
{
    QDomDocument document;
    document.setContent("<a><b x='1'>\xC3\xA4</b></a>"_ba);
    return document;
}

template <typename Value, typename Second>
concept Writes =
    requires(VelorIODevice& device, const Value& value, Second second) { device.write(value, second); };

static_assert(Writes<void*, int> && Writes<unsigned char[4], std::uint64_t> && Writes<char[4], std::size_t>);
static_assert(!Writes<void*, bool> && !Writes<unsigned char[4], bool> && !Writes<wchar_t[4], bool>);

struct WriteRow
{
    const char* name;
    std::function<bool(VelorIODevice&)> write;
    std::string bytes;
    bool written = true;
};

const WriteRow WriteRows[] = {
    {"vectors as x, y, z",
     [](auto& d) {
         return d.writeArray(std::array{Vector, Vector}.data(), 2);
     },
     VectorBytes + VectorBytes},
    {"quaternion with w first", [](auto& d) { return d.write(Rotation); }, RotationBytes},
    {"matrix in storage order", [](auto& d) { return d.write(TMat4d<float>()); }, IdentityBytes},
    {"empty array succeeds", [](auto& d) { return d.writeArray(nullptr, 0); }, ""},
    {"string is whole with its zeros", [](auto& d) { return d.write(u"\u00E4\U0001F600\0b"_s, true); },
     "\xC3\xA4\xF0\x9F\x98\x80\0b\0"s},
    {"null string is terminated", [](auto& d) { return d.write(QString(), true); }, "\0"s},
    {"literal is UTF-8", [](auto& d) { return d.write("\xC3\xA4\xFF", true); }, "\xC3\xA4\xEF\xBF\xBD\0"s},
    {"an integer behind a literal counts raw bytes", [](auto& d) { return d.write("\xFF\0b", 3); },
     "\xFF\0b"s},
    {"UTF-8 literal", [](auto& d) { return d.write(u8"\u00E4", true); }, "\xC3\xA4\0"s},
    {"UTF-16 literal", [](auto& d) { return d.write(u"\u00E4", false); }, "\xC3\xA4"},
    {"character pointer ends at its zero",
     [](auto& d) {
         return d.write(std::array{'a', '\0', 'b'}.data(), true);
     },
     "a\0"s},
    {"null pointer is an empty text",
     [](auto& d) { return d.write(static_cast<const char*>(nullptr), true); }, "\0"s},
    {"standard string is whole with its zeros", [](auto& d) { return d.write("a\0b"s, true); }, "a\0b\0"s},
    {"Qt's view", [](auto& d) { return d.write(QStringView(u"\u00E4"), true); }, "\xC3\xA4\0"s},
    {"Latin-1 becomes UTF-8", [](auto& d) { return d.write("\xE4"_L1, true); }, "\xC3\xA4\0"s},
    {"byte array is UTF-8", [](auto& d) { return d.write("\xFF"_ba, true); }, "\xEF\xBF\xBD\0"s},
    {"XML indented by 4", [](auto& d) { return d.write(dom()); }, DomText},
    {"empty XML succeeds", [](auto& d) { return d.write(QDomDocument()); }, ""},
    {"JSON indented", [](auto& d) { return d.write(Json); }, JsonText},
    {"empty JSON fails", [](auto& d) { return d.write(QJsonDocument()); }, "", false},
};

/// Whatever call of the source fails, the write reports it and leaves what it has written.
TEST(VelorIODevice, WritesTheExactBytesOrSaysThatItDidNot)
{
    for (const WriteRow& row : WriteRows) {
        SCOPED_TRACE(row.name);
        MemorySource source;
        VelorIODevice device(&source);
        EXPECT_EQ(row.write(device), row.written);
        EXPECT_EQ(source.bytes, row.bytes);
        for (int good = 0; good < source.writes && !row.bytes.empty(); ++good) {
            MemorySource cut;
            FailingSource failing(&cut, good);
            VelorIODevice failingDevice(&failing);
            EXPECT_FALSE(row.write(failingDevice)) << good;
            EXPECT_EQ(cut.bytes, row.bytes.substr(0, 4 * static_cast<std::size_t>(good)));
        }
    }
}

TEST(VelorIODevice, ReadsWhatStandsThereAndZerosBehindTheEnd)
{
    const std::string bytes = "a\0"s + RotationBytes + VectorBytes + IdentityBytes + VectorBytes;
    for (std::size_t size = 1; size <= bytes.size(); ++size) {
        MemorySource source(bytes.substr(0, size));
        VelorIODevice device(&source);
        MemorySource copy;
        VelorIODevice writer(&copy);
        writer.write(device.readString(), true);
        writer.write(device.readQuaternion());
        writer.write(device.readVector3());
        writer.write(device.readMatrix4());
        TVec3d<float> value = Vector;
        device.readVector3Array(&value, 1);
        writer.write(value);
        EXPECT_EQ(copy.bytes, bytes.substr(0, size) + std::string(bytes.size() - size, '\0'));
    }
}

TEST(VelorIODevice, ADocumentIsWholeOrEmpty)
{
    MemorySource source("xx" + DomText);
    VelorIODevice device(&source);
    device.seek(2);
    EXPECT_EQ(device.readDomDocument().documentElement().text(), u"\u00E4"_s);
    EXPECT_EQ(device.tell(), source.bytes.size());
    EXPECT_TRUE(device.readDomDocument().isNull()) << "nothing is left";
    source.bytes = "[\"" + std::string(17 << 20, 'x') + "\"]";
    device.rewind();
    EXPECT_EQ(device.readJsonDocument().array().at(0).toString().size(), 17 << 20);

    for (const std::string& text : {"<a><b/><c>"s, "<a/><b/>"s, "{\"a\":1"s, "\xFF\xFE"s, ""s}) {
        source.bytes = text;
        device.rewind();
        EXPECT_FALSE(device.readDomDocument().hasChildNodes()) << text;
        device.rewind();
        EXPECT_TRUE(device.readJsonDocument().isNull()) << text;
    }
    source.bytes = JsonText;
    for (const std::uint64_t size : {99ULL, 1ULL << 27, 1ULL << 31, ~0ULL}) {
        source.reportedSize = size;
        device.rewind();
        source.reads = 0;
        EXPECT_TRUE(device.readJsonDocument().isNull()) << size;
        EXPECT_LE(source.reads, 1) << "more was asked for after a short read";
    }
}

TEST(VelorIODevice, FindsAFreeFilename)
{
    const TestFolder folder;
    const auto nameFor = [&](const QString& path) {
        return VelorIODevice::safeFilename(folder.path(path), u".x"_s);
    };
    EXPECT_EQ(nameFor(u"my file-1.v2.txt"_s), folder.path(u"my_file_1_v2.x"_s));
    EXPECT_EQ(nameFor(u"\u00E4\u05E9\u4E2D1"_s), folder.path(u"\u00E4\u05E9\u4E2D1.x"_s));
    writeFile(folder.path(u"_1.x"_s), "");
    EXPECT_EQ(nameFor(u"%1.x"_s), folder.path(u"_1_1.x"_s)) << "a percent sign is no place for a number";
    EXPECT_EQ(VelorIODevice::safeFilename(u"no dir/a"_s, u".x"_s), QDir::currentPath() + u"/no dir/a.x"_s);
}

TEST(VelorIODevice, LoadsAWholeFile)
{
    const TestFolder folder;
    const QString path = folder.path(u"n\u00E4me \U0001F600"_s);
    unsigned char untouched = 0;
    unsigned char* data = &untouched;
    std::uint64_t size = 77;
    EXPECT_FALSE(VelorIODevice::loadBytesFrom(path, data, size));
    EXPECT_EQ(size, 77u);
    writeFile(path, "");
    EXPECT_FALSE(VelorIODevice::loadBytesFrom(path, data, size));
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(data, &untouched);
    writeFile(path, "a\0\r\nb"s);
    ASSERT_TRUE(VelorIODevice::loadBytesFrom(path, data, size));
    EXPECT_EQ(std::string(data, data + size), "a\0\r\nb"s);
    delete[] data;
}

} // namespace
