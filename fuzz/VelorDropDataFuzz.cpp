#include <Velor.Base/VelorDropData.h>

#include <QtCore/QDataStream>
#include <QtCore/QIODevice>

#include <cstdint>
#include <cstdlib>

namespace {

VelorDropData read(const QByteArray& bytes, QDataStream::Status earlier = QDataStream::Ok)
{
    QDataStream stream(bytes);
    stream.setStatus(earlier);
    VelorDropData payload;
    stream >> payload;
    return payload;
}

QByteArray written(const VelorDropData& payload)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << payload;
    return bytes;
}

} // namespace

/// The payload of a drag comes from whatever process the user dragged from. There must be no more items than
/// the bytes can pay for, what is read must be written and read again to the same bytes, and an error that
/// the stream had before must change nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr qsizetype SmallestItem = 10;

    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const VelorDropData payload = read(bytes);
    const QByteArray once = written(payload);
    if (payload.getItems().size() * SmallestItem > bytes.size() || written(read(once)) != once ||
        written(read(bytes, QDataStream::ReadPastEnd)) != once) {
        std::abort();
    }
    return 0;
}
