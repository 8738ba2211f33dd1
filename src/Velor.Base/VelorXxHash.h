#pragma once

#include "VelorBaseExport.h"

#include <cstdint>
#include <memory>

class KelbIOSource;

/// The 64-bit content hash XXH64 of the xxHash library, with seed 0: the digest that every other
/// implementation of it computes for the same bytes.
///
/// An object is a running hash, used by one thread at a time. The one-shot forms share nothing and allocate
/// nothing. Nothing here fails or throws but for want of memory in a constructor.
class VELOR_BASE_EXPORT VelorXxHash
{
public:
    VelorXxHash();
    ~VelorXxHash();
    /// A copy continues from the bytes that were fed to the original, independently of it.
    /// @{
    VelorXxHash(const VelorXxHash& other);
    VelorXxHash& operator=(const VelorXxHash& other);
    /// @}

    /// Feeds `size` bytes; nothing where `data` is null.
    void addBytes(const void* data, std::uint64_t size);
    /// The digest of all bytes so far. More may follow.
    std::uint64_t hash() const;

    /// The digest of one buffer; that of no bytes where `data` is null.
    static std::uint64_t fromBytes(const void* data, std::uint64_t size);
    /// The digest of what `source` delivers from its position on, read in blocks of 4096 bytes until it
    /// reports its end or an error. After an error, which `source->hasError` reports, it covers the bytes
    /// until then.
    static std::uint64_t fromSource(KelbIOSource* source);

private:
    struct State;
    std::unique_ptr<State> mState;
};
