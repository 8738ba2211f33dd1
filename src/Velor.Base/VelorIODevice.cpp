#include "VelorIODevice.h"

#include "XmlForm.h"

#include <QtCore/QByteArray>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>

#include <algorithm>
#include <limits>
#include <memory>

namespace {

constexpr int MaxFilenames = 9999;

/// How much is asked for at once. A source that announces more than it has costs this much memory, and not
/// what it announces.
constexpr qsizetype ReadBlock = qsizetype(16) * 1024 * 1024;

bool writeBytes(KelbIOSource& source, const QByteArray& bytes, std::uint64_t count)
{
    return source.write(bytes.constData(), count) == count;
}

bool writeBytes(KelbIOSource& source, const QByteArray& bytes)
{
    return writeBytes(source, bytes, static_cast<std::uint64_t>(bytes.size()));
}

/// Everything from the position to the end; empty if that is not as much as the source's size promises, or
/// more than a document may have.
QByteArray readRemaining(KelbIOSource& source)
{
    const auto remaining = static_cast<std::int64_t>(source.size() - source.tell());
    if (remaining > std::numeric_limits<std::int32_t>::max()) {
        return {};
    }
    QByteArray bytes;
    while (bytes.size() < remaining) {
        const qsizetype before = bytes.size();
        bytes.resize(std::min(static_cast<qsizetype>(remaining), before + ReadBlock));
        const auto wanted = static_cast<std::uint64_t>(bytes.size() - before);
        if (source.read(bytes.data() + before, wanted) != wanted) {
            return {};
        }
    }
    return bytes;
}

} // namespace

VelorIODevice::VelorIODevice(KelbIOSource* source)
    : KelbIODevice(source)
{}

VelorIODevice::~VelorIODevice() = default;

bool VelorIODevice::write(const QString& text, bool terminate) { return write(QStringView(text), terminate); }

bool VelorIODevice::write(QStringView text, bool terminate)
{
    const QByteArray bytes = text.toUtf8(); // Has a byte 0 behind its end.
    return writeBytes(*mSource, bytes, static_cast<std::uint64_t>(bytes.size()) + (terminate ? 1 : 0));
}

bool VelorIODevice::write(const QByteArray& text, bool terminate)
{
    return write(QString::fromUtf8(text), terminate);
}

bool VelorIODevice::write(const TVec3d<float>& value)
{
    return writeFloat(&value.x) && writeFloat(&value.y) && writeFloat(&value.z);
}

bool VelorIODevice::write(const quat& value)
{
    return writeFloat(&value.w) && writeFloat(&value.x) && writeFloat(&value.y) && writeFloat(&value.z);
}

bool VelorIODevice::write(const TMat4d<float>& value)
{
    return std::all_of(value.elements.begin(), value.elements.end(),
                       [this](const float& element) { return writeFloat(&element); });
}

bool VelorIODevice::write(const QDomDocument& document)
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    saveIndented(document, stream);
    return writeBytes(*mSource, text.toUtf8());
}

bool VelorIODevice::write(const QJsonDocument& document)
{
    const QByteArray text = document.toJson(QJsonDocument::Indented);
    return !text.isEmpty() && writeBytes(*mSource, text);
}

bool VelorIODevice::writeArray(const TVec3d<float>* values, std::uint64_t count)
{
    return std::all_of(values, values + count, [this](const TVec3d<float>& value) { return write(value); });
}

void VelorIODevice::readVector3Array(TVec3d<float>* values, std::uint64_t count)
{
    std::generate(values, values + count, [this] { return readVector3(); });
}

// The elements of a braced list are read one after the other, in the order in which they stand.
TVec3d<float> VelorIODevice::readVector3() { return {readFloat(), readFloat(), readFloat()}; }

quat VelorIODevice::readQuaternion()
{
    quat value;
    value.w = readFloat();
    value.x = readFloat();
    value.y = readFloat();
    value.z = readFloat();
    return value;
}

TMat4d<float> VelorIODevice::readMatrix4()
{
    TMat4d<float> value;
    std::generate(value.elements.begin(), value.elements.end(), [this] { return readFloat(); });
    return value;
}

QString VelorIODevice::readString()
{
    QByteArray bytes;
    while (const std::uint8_t byte = readByte()) {
        bytes.append(static_cast<char>(byte));
    }
    return QString::fromUtf8(bytes);
}

QDomDocument VelorIODevice::readDomDocument()
{
    QDomDocument document;
    const QByteArray text = readRemaining(*mSource);
    // A text that breaks off leaves the elements that stood before the fault.
    if (!text.isEmpty() && !document.setContent(text)) {
        return {};
    }
    return document;
}

QJsonDocument VelorIODevice::readJsonDocument() { return QJsonDocument::fromJson(readRemaining(*mSource)); }

QString VelorIODevice::safeFilename(QString path, QString extension)
{
    const QFileInfo file(path);
    const QString directory = file.absolutePath();
    QString base = file.completeBaseName();
    std::replace_if(
        base.begin(), base.end(), [](QChar unit) { return !unit.isLetterOrNumber(); }, u'_');
    QString candidate;
    for (int n = 0; n < MaxFilenames; ++n) {
        const QString suffix = n == 0 ? QString() : QStringLiteral("_%1").arg(n);
        candidate = directory + u'/' + base + suffix + extension;
        if (!QFileInfo::exists(candidate)) {
            break;
        }
    }
    return candidate;
}

bool VelorIODevice::loadBytesFrom(const QString& path, unsigned char*& data, std::uint64_t& size)
{
    KelbFile file(path.toUtf8().constData(), KelbFile::ModeRead);
    if (!file.isOpen()) {
        return false;
    }
    size = file.size();
    if (size == 0) {
        return false;
    }
    data = new unsigned char[size];
    const std::uint64_t bytesRead = file.read(data, size);
    std::fill(data + bytesRead, data + size, static_cast<unsigned char>(0));
    return true;
}

bool VelorIODevice::writeText(std::string_view text, bool terminate)
{
    return write(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())), terminate);
}

bool VelorIODevice::writeText(std::u8string_view text, bool terminate)
{
    return write(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())), terminate);
}

bool VelorIODevice::writeText(std::u16string_view text, bool terminate)
{
    return write(QStringView(text.data(), static_cast<qsizetype>(text.size())), terminate);
}
