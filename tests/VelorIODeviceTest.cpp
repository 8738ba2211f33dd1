#include "TestHelpers.h"

#include <Velor.Base/VelorIODevice.h>

#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtXml/QDomDocument>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

namespace {

using namespace std::string_literals;

const TVec3d<float> Vector{1.5f, -2.0f, 0.1f};
const quat Rotation{0.25f, -0.125f, 1.0f, 0.5f};

// As python3 packs them: struct.pack('<3f', 1.5, -2, 0.1), struct.pack('<4f', 0.5, 0.25, -0.125, 1).
const std::string VectorBytes = "\x00\x00\xC0\x3F\x00\x00\x00\xC0\xCD\xCC\xCC\x3D"s;
const std::string RotationBytes = "\x00\x00\x00\x3F\x00\x00\x80\x3E\x00\x00\x00\xBE\x00\x00\x80\x3F"s;
const std::string IdentityBytes = [] {
    const std::string one = "\x00\x00\x80\x3F"s;
    const std::string zeros(16, '\0');
    return one + zeros + one + zeros + one + zeros + one;
}();

QDomDocument domOf(const char* xml)
{
    QDomDocument document;
    document.setContent(QString::fromUtf8(xml));
    return document;
}

const QJsonDocument Json(QJsonObject{{QStringLiteral("n\u00E4me"), QJsonArray{1, QStringLiteral("x")}}});
const std::string JsonText = "{\n    \"n\xC3\xA4me\": [\n        1,\n        \"x\"\n    ]\n}\n";
const char* const DomText = "<a>\n    <b x=\"1\">\xC3\xA4</b>\n</a>\n";

struct WriteRow
{
    const char* fault;
    std::function<bool(VelorIODevice&)> write;
    std::string bytes;
    bool written = true;
};

const WriteRow WriteRows[] = {
    {"vector", [](VelorIODevice& d) { return d.write(Vector); }, VectorBytes},
    {"quaternion in the order of its fields", [](VelorIODevice& d) { return d.write(Rotation); },
     RotationBytes},
    {"matrix", [](VelorIODevice& d) { return d.write(TMat4d<float>()); }, IdentityBytes},
    {"array with a count",
     [](VelorIODevice& d) {
         const TVec3d<float> values[] = {Vector, Vector};
         return d.writeArray(values, 2);
     },
     VectorBytes + VectorBytes},
    {"empty array fails", [](VelorIODevice& d) { return d.writeArray(nullptr, 0); }, ""},
    {"string not terminated",
     [](VelorIODevice& d) { return d.write(QStringLiteral("a\u00E4\U0001F600"), true); },
     "a\xC3\xA4\xF0\x9F\x98\x80\0"s},
    {"string terminated", [](VelorIODevice& d) { return d.write(QStringLiteral("ab"), false); }, "ab"},
    {"null string not terminated", [](VelorIODevice& d) { return d.write(QString(), true); }, "\0"s},
    {"null string fails", [](VelorIODevice& d) { return d.write(QString(), false); }, ""},
    {"string cut at U+0000", [](VelorIODevice& d) { return d.write(QStringLiteral("a\0b"), true); },
     "a\0b\0"s},
    {"XML", [](VelorIODevice& d) { return d.write(domOf("<a><b x='1'>\xC3\xA4</b></a>")); }, DomText},
    {"empty XML fails", [](VelorIODevice& d) { return d.write(QDomDocument()); }, ""},
    {"JSON", [](VelorIODevice& d) { return d.write(Json); }, JsonText},
    {"empty JSON is written", [](VelorIODevice& d) { return d.write(QJsonDocument()); }, "", false},
    {"raw bytes hidden", [](VelorIODevice& d) { return d.write("abc", 3) == 3; }, "abc"},
};

TEST(VelorIODevice, WritesTheExactBytes)
{
    for (const WriteRow& row : WriteRows) {
        SCOPED_TRACE(row.fault);
        MemorySource source;
        VelorIODevice device(&source);
        EXPECT_EQ(row.write(device), row.written);
        EXPECT_EQ(source.bytes, row.bytes);
    }
}

/// Whatever call of the source fails, the write tells so and leaves what it has written.
TEST(VelorIODevice, AWriteThatFallsShortSaysSoAndStops)
{
    for (const WriteRow& row : WriteRows) {
        SCOPED_TRACE(row.fault);
        MemorySource counted;
        VelorIODevice device(&counted);
        row.write(device);
        for (int good = 0; good < counted.writes && !row.bytes.empty(); ++good) {
            MemorySource source;
            FailingSource failing(&source, good);
            VelorIODevice failingDevice(&failing);
            EXPECT_FALSE(row.write(failingDevice)) << good;
            EXPECT_EQ(source.bytes, row.bytes.substr(0, 4 * static_cast<std::size_t>(good)));
        }
    }
}

TEST(VelorIODevice, ReadsWhatStandsThere)
{
    MemorySource source(RotationBytes + VectorBytes + IdentityBytes + VectorBytes + VectorBytes);
    VelorIODevice device(&source);
    EXPECT_EQ(device.readQuaternion(), Rotation);
    EXPECT_EQ(device.readVector3(), Vector);
    EXPECT_EQ(device.readMatrix4(), TMat4d<float>());
    TVec3d<float> values[3];
    device.readVector3Array(values, 0);
    device.readVector3Array(values, 2);
    EXPECT_EQ(values[0], Vector);
    EXPECT_EQ(values[1], Vector);
    EXPECT_EQ(values[2], TVec3d<float>());
}

TEST(VelorIODevice, WhatIsMissingAtTheEndIsZero)
{
    const auto cutAt = [](std::size_t size) { return MemorySource(RotationBytes.substr(0, size)); };
    for (std::size_t size = 0; size <= 16; ++size) {
        SCOPED_TRACE(size);
        MemorySource source = cutAt(size);
        const quat value = VelorIODevice(&source).readQuaternion();
        const std::string padded = RotationBytes.substr(0, size) + std::string(16 - size, '\0');
        MemorySource written;
        VelorIODevice(&written).write(value);
        EXPECT_EQ(written.bytes, padded);
    }
    MemorySource empty;
    TMat4d<float> zeros;
    zeros.elements.fill(0);
    EXPECT_EQ(VelorIODevice(&empty).readMatrix4(), zeros) << "the identity is made up";
    TVec3d<float> values[] = {Vector};
    VelorIODevice(&empty).readVector3Array(values, 1);
    EXPECT_EQ(values[0], TVec3d<float>());
}

TEST(VelorIODevice, StringsEndAtAZeroOrTheEndOfTheData)
{
    MemorySource source("a\0b\0\0\xC3\xA4\xFF"s);
    VelorIODevice device(&source);
    EXPECT_EQ(device.readString(), QStringLiteral("a"));
    EXPECT_EQ(device.readString(), QStringLiteral("b"));
    EXPECT_EQ(device.readString(), QString());
    EXPECT_EQ(device.readString(), QStringLiteral("\u00E4\uFFFD"));
    EXPECT_EQ(device.readString(), QString());
}

TEST(VelorIODevice, DocumentsReachFromThePositionToTheEnd)
{
    MemorySource source("xx"s + DomText);
    source.seek(2);
    VelorIODevice device(&source);
    EXPECT_EQ(device.readDomDocument().documentElement().text(), QStringLiteral("\u00E4"));
    EXPECT_EQ(device.tell(), source.bytes.size());
    const int reads = source.reads;
    EXPECT_TRUE(device.readDomDocument().isNull());
    EXPECT_TRUE(device.readJsonDocument().isNull());
    EXPECT_EQ(source.reads, reads) << "nothing is left to read";

    source.bytes = JsonText;
    device.rewind();
    EXPECT_EQ(device.readJsonDocument(), Json);
    source.seek(source.bytes.size() + 5);
    EXPECT_TRUE(device.readJsonDocument().isNull()) << "a position behind the end";
}

TEST(VelorIODevice, ReadsADocumentOfManyMegabytes)
{
    MemorySource source("[\"" + std::string(17 << 20, 'x') + "\"]");
    VelorIODevice device(&source);
    EXPECT_EQ(device.readJsonDocument().array().at(0).toString().size(), 17 << 20);
}

/// Tells a size of its own.
class LyingSource : public KelbIODevice
{
public:
    LyingSource(KelbIOSource* source, std::uint64_t size)
        : KelbIODevice(source)
        , mSize(size)
    {}
    std::uint64_t size() override { return mSize; }

private:
    std::uint64_t mSize;
};

TEST(VelorIODevice, ASourceThatLiesAboutItsSizeGivesAnEmptyDocument)
{
    constexpr std::uint64_t TwoGibibytes = std::uint64_t(1) << 31;
    const std::uint64_t text = std::string_view(DomText).size();
    for (const std::uint64_t size : {std::uint64_t(0), text - 9, text + 1, TwoGibibytes - 1, TwoGibibytes,
                                     std::uint64_t(1) << 62, ~std::uint64_t(0)}) {
        SCOPED_TRACE(size);
        MemorySource source(DomText);
        LyingSource lying(&source, size);
        VelorIODevice device(&lying);
        EXPECT_FALSE(device.readDomDocument().hasChildNodes());
        source.bytes = JsonText;
        device.rewind();
        LyingSource lyingOnJson(&source, size);
        EXPECT_TRUE(VelorIODevice(&lyingOnJson).readJsonDocument().isNull());
    }
}

TEST(VelorIODevice, ASourceThatFailsGivesAnEmptyDocument)
{
    for (int good = 0; good < 2; ++good) {
        MemorySource source(DomText);
        FailingSource failing(&source, good);
        EXPECT_FALSE(VelorIODevice(&failing).readDomDocument().hasChildNodes()) << good;
    }
}

TEST(VelorIODevice, ABrokenDocumentIsEmptyToTheLastNode)
{
    for (const char* text : {"<a><b/><c>", "<a/><b/>", "{\"a\":1", "\xFF\xFE", "nothing"}) {
        MemorySource source(text);
        VelorIODevice device(&source);
        EXPECT_FALSE(device.readDomDocument().hasChildNodes()) << text;
        device.rewind();
        EXPECT_TRUE(device.readJsonDocument().isNull()) << text;
    }
}

TEST(VelorIODevice, CopiesShareThePosition)
{
    MemorySource source(VectorBytes + RotationBytes);
    VelorIODevice device(&source);
    VelorIODevice copy(device);
    EXPECT_EQ(device.readVector3(), Vector);
    EXPECT_EQ(copy.readQuaternion(), Rotation);
}

struct NameRow
{
    const char* fault;
    const char* path;
    const char* extension;
    QStringList taken;
    const char* name;
};

const NameRow NameRows[] = {
    {"signs kept", "my file-1.v2.txt", ".txt", {}, "my_file_1_v2.txt"},
    {"first number is not 1", "my file.txt", ".txt", {QStringLiteral("my_file.txt")}, "my_file_1.txt"},
    {"a gap is passed over",
     "a.b",
     ".b",
     {QStringLiteral("a.b"), QStringLiteral("a_1.b"), QStringLiteral("a_3.b")},
     "a_2.b"},
    {"letters beyond ASCII replaced",
     "\xC3\xA4\xD7\xA9\xE4\xB8\xAD"
     "1.x",
     "",
     {},
     "\xC3\xA4\xD7\xA9\xE4\xB8\xAD"
     "1"},
    {"one underscore for two units", "\xF0\x9F\x98\x80.x", ".x", {}, "__.x"},
    {"extension cleaned, or given a full stop", "a.x", "-%1 y", {}, "a-%1 y"},
    {"placeholder in the name", "%1.x", ".x", {QStringLiteral("_1.x")}, "_1_1.x"},
    {"no base name", ".x", ".x", {}, ".x"},
    {"a folder is not in the way", "d.x", "", {QStringLiteral("d/")}, "d_1"},
};

TEST(VelorIODevice, FindsAFreeFilename)
{
    for (const NameRow& row : NameRows) {
        SCOPED_TRACE(row.fault);
        const TestFolder folder;
        for (const QString& name : row.taken) {
            name.endsWith(u'/') ? void(QDir().mkpath(folder.path(name))) : writeFile(folder.path(name), "");
        }
        EXPECT_EQ(VelorIODevice::safeFilename(folder.path(QString::fromUtf8(row.path)),
                                              QString::fromUtf8(row.extension)),
                  folder.path(QString::fromUtf8(row.name)));
    }
    EXPECT_EQ(VelorIODevice::safeFilename(QStringLiteral("no dir/a b"), QStringLiteral(".x")),
              QDir::currentPath() + QStringLiteral("/no dir/a_b.x"));
}

TEST(VelorIODevice, GivesTheLastFilenameWhenAllAreTaken)
{
    const TestFolder folder;
    const std::string first = folder.narrowPath("a.x");
    writeFile(folder.path(QStringLiteral("a.x")), "");
    for (int n = 1; n < 9998; ++n) {
        std::filesystem::create_hard_link(first, folder.narrowPath("a_") + std::to_string(n) + ".x");
    }
    const QString last = folder.path(QStringLiteral("a_9998.x"));
    const auto safeName = [&] {
        return VelorIODevice::safeFilename(folder.path(QStringLiteral("a")), QStringLiteral(".x"));
    };
    EXPECT_EQ(safeName(), last);
    writeFile(last, "");
    EXPECT_EQ(safeName(), last);
}

TEST(VelorIODevice, LoadsAWholeFile)
{
    const TestFolder folder;
    const QString path = folder.path(QStringLiteral("n\u00E4me \U0001F600"));
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
    EXPECT_EQ(std::string(reinterpret_cast<char*>(data), size), "a\0\r\nb"s);
    delete[] data;
}

} // namespace
