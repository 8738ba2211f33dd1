#pragma once

#include "KelbIOSource.h"
#include "VelorBaseExport.h"
#include "VelorVectors.h"

#include <cstdint>
#include <string_view>
#include <type_traits>

class QByteArray;
class QDomDocument;
class QJsonDocument;
class QString;
class QStringView;

/// A literal, a zero-terminated text or a string of the standard library, with characters of this type.
template <typename Text, typename Character>
concept VelorTextOf =
    std::is_convertible_v<const Text&, std::basic_string_view<Character>> && !std::is_null_pointer_v<Text>;

/// What `VelorIODevice` writes as a text beside the strings of Qt: UTF-8 or UTF-16.
template <typename Text>
concept VelorText = VelorTextOf<Text, char> || VelorTextOf<Text, char8_t> || VelorTextOf<Text, char16_t>;

/// Stores and loads typed values through any source, at its position.
///
/// The forms have no type tags, no lengths, no version and no padding: a reader has to know what comes next.
/// Numbers are little-endian on every machine.
///
/// | Value               | Bytes                                                                  |
/// |---------------------|------------------------------------------------------------------------|
/// | float               | 4: IEEE 754 binary32                                                   |
/// | `TVec3d<float>`     | 12: x, y, z                                                            |
/// | `quat`              | 16: w, x, y, z, which is not the order of the fields                   |
/// | `TMat4d<float>`     | 64: the elements in storage order                                      |
/// | array of vectors    | 12 for each; the count is not stored                                   |
/// | `QString`           | UTF-8, and a byte 0 where it is terminated                             |
/// | `QDomDocument`      | XML text in UTF-8, indented by 4; up to the end of the source          |
/// | `QJsonDocument`     | indented JSON text in UTF-8; up to the end of the source               |
///
/// The device holds only a pointer to its source: see `KelbIODevice`. Every float is a call of four bytes and
/// a string is read byte by byte, so a source should buffer. A write returns whether all of it was written,
/// stops where the source falls short, and leaves what was written. A read reports no failure: what is
/// missing at the end of the data is 0, so that a quaternion or a matrix from there is all zeros. Over a
/// KelbDeviceSource, `eof` after the last value is true if something was missing.
class VELOR_BASE_EXPORT VelorIODevice : public KelbIODevice
{
public:
    /// `source` must not be null and outlives the device.
    explicit VelorIODevice(KelbIOSource* source);
    /// A copy shares the source and its position.
    /// @{
    VelorIODevice(const VelorIODevice&) = default;
    VelorIODevice& operator=(const VelorIODevice&) = default;
    /// @}
    ~VelorIODevice() override;

    /// Raw bytes: `write(pointer, count)` with an integer as `count`. A `bool` there asks for a text.
    using KelbIODevice::write;
    /// Writes the text as UTF-8 in one call of the source. A U+0000 inside ends the string for `readString`,
    /// and a leading U+FEFF is not read back.
    ///
    /// Every kind of text writes what the `QString` of it would: `char`, `char8_t` and `QByteArray` hold
    /// UTF-8, `char16_t` UTF-16 and `QLatin1String` Latin-1. What is invalid is replaced as Qt does. A null
    /// pointer is an empty text. A `bool` behind a pointer to anything else does not compile.
    /// @{
    bool write(const QString& text, bool terminate);
    bool write(QStringView text, bool terminate);
    bool write(const QByteArray& text, bool terminate);
    template <VelorText Text, typename Flag>
        requires std::is_same_v<Flag, bool>
    bool write(const Text& text, Flag terminate)
    {
        if constexpr (VelorTextOf<Text, char>) {
            return writeText(viewOf<char>(text), terminate);
        } else if constexpr (VelorTextOf<Text, char8_t>) {
            return writeText(viewOf<char8_t>(text), terminate);
        } else {
            return writeText(viewOf<char16_t>(text), terminate);
        }
    }
    template <typename Other, typename Flag>
        requires(std::is_same_v<Flag, bool> && !VelorText<Other> && !std::is_class_v<Other>)
    bool write(const Other& other, Flag terminate) = delete;
    /// @}
    /// Writes the components of one value, in the order that the table has.
    /// @{
    bool write(const ::TVec3d<float>& value);
    bool write(const ::quat& value);
    bool write(const ::TMat4d<float>& value);
    /// @}
    /// Writes the text in one call of the source; an empty document writes nothing and returns true. The
    /// bytes are UTF-8 whatever encoding the document declares, so it should declare none or UTF-8.
    bool write(const QDomDocument& document);
    /// Writes the text in one call of the source; an empty document writes nothing and returns false.
    bool write(const QJsonDocument& document);
    /// Writes `count` vectors, without their number.
    bool writeArray(const ::TVec3d<float>* values, std::uint64_t count);

    /// Reads `count` vectors into `values`, which has room for them.
    void readVector3Array(::TVec3d<float>* values, std::uint64_t count);
    /// The next value, as `write` writes it.
    /// @{
    ::TVec3d<float> readVector3();
    ::quat readQuaternion();
    ::TMat4d<float> readMatrix4();
    /// @}
    /// Reads up to a byte 0, which is consumed, or the end of the data. Invalid UTF-8 becomes U+FFFD.
    QString readString();
    /// Reads everything up to the end of the source. The document is empty when nothing is left, when the
    /// source delivers less than the size that it reported, when the text does not parse, and when it has 2
    /// GiB or more. Qt frees a document by recursion, so that very deep nesting takes stack.
    QDomDocument readDomDocument();
    /// Like `readDomDocument`, for JSON.
    QJsonDocument readJsonDocument();

    /// A name for a new file in the directory of `path`: the base name of `path`, each UTF-16 unit that is no
    /// letter or number replaced by an underscore, then `extension`, which brings its own full stop. Where
    /// that exists, "_1" to "_9998" is put in front of `extension`, and the last of these is returned even
    /// though it exists. Nothing is created: two callers can get one name.
    static QString safeFilename(QString path, QString extension);
    /// Reads a whole file into `data`, which the caller frees by `delete[]`; bytes that cannot be read are 0.
    /// A file that is missing or cannot be opened changes nothing and returns false; an empty one sets `size`
    /// to 0 and returns false. A file too large for memory throws `std::bad_alloc`.
    [[nodiscard]] static bool loadBytesFrom(const QString& path, unsigned char*& data, std::uint64_t& size);

private:
    template <typename Character, typename Text>
    static std::basic_string_view<Character> viewOf(const Text& text)
    {
        if constexpr (std::is_pointer_v<Text>) {
            return text == nullptr ? std::basic_string_view<Character>() : text;
        } else {
            return text;
        }
    }

    bool writeText(std::string_view text, bool terminate);
    bool writeText(std::u8string_view text, bool terminate);
    bool writeText(std::u16string_view text, bool terminate);
};
