#include "support/SourceContract.h"

#include <Velor.Base/KelbDeviceSource.h>

#include <QtCore/QBuffer>
#include <QtCore/QFile>

#include <limits>

namespace {

TEST(KelbDeviceSource, KeepsTheContractOfSources)
{
    const TestFolder folder;
    QFile file(folder.path(QStringLiteral("q")));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    KelbDeviceSource fileSource(&file);
    expectSourceContract(fileSource);
    QBuffer buffer;
    ASSERT_TRUE(buffer.open(QIODevice::ReadWrite));
    KelbDeviceSource bufferSource(&buffer);
    expectSourceContract(bufferSource);
}

/// A device whose reads, writes and moves fail, such as a disk that is gone.
class BrokenDevice : public QIODevice
{
public:
    bool isSequential() const override { return sequential; }
    bool seek(qint64) override { return false; }
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char*, qint64) override { return -1; }

    bool sequential = false;
};

TEST(KelbDeviceSource, SaysWhatItsDeviceCannotDo)
{
    BrokenDevice device;
    device.open(QIODevice::ReadWrite | QIODevice::Unbuffered);
    KelbDeviceSource reading(&device);
    EXPECT_EQ(readBytes(reading, 3), "");
    EXPECT_TRUE(reading.hasError());
    EXPECT_FALSE(reading.eof()) << "a failure is not the end";
    KelbDeviceSource writing(&device);
    EXPECT_EQ(writing.write("abc", 3), 0u);
    EXPECT_TRUE(writing.hasError());
    KelbDeviceSource moving(&device);
    moving.seek(1);
    EXPECT_TRUE(moving.hasError());
    device.sequential = true;
    EXPECT_TRUE(KelbDeviceSource(&device).hasError()) << "a device that cannot seek";
}

TEST(KelbDeviceSource, KeepsThePositionWhereAMoveCannotBe)
{
    QBuffer buffer;
    buffer.setData("0123");
    buffer.open(QIODevice::ReadOnly);
    KelbDeviceSource source(&buffer);
    source.seek(3);
    source.skip(-4);
    source.skip(std::numeric_limits<std::int64_t>::max());
    source.seek(std::uint64_t(1) << 63);
    EXPECT_EQ(source.tell(), 3u);
    EXPECT_FALSE(source.hasError());
    EXPECT_EQ(readBytes(source, 2), "3");
    EXPECT_EQ(readBytes(source, 0), "");
    EXPECT_TRUE(source.eof()) << "a read of 0 bytes does not change eof";
    source.seek(std::uint64_t(1) << 63);
    EXPECT_FALSE(source.eof()) << "every move clears it";
}

} // namespace
