#include "VelorXxHash.h"

#include "KelbIOSource.h"

// For a state that need not be on the heap: its size is promised only to code that is compiled along with the
// functions on it.
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace {

constexpr XXH64_hash_t Seed = 0;
constexpr std::size_t BlockSize = 4096;

} // namespace

struct VelorXxHash::State
{
    State() { XXH64_reset(&running, Seed); }

    XXH64_state_t running;
};

VelorXxHash::VelorXxHash()
    : mState(std::make_unique<State>())
{}

VelorXxHash::~VelorXxHash() = default;

VelorXxHash::VelorXxHash(const VelorXxHash& other)
    : mState(std::make_unique<State>(*other.mState))
{}

VelorXxHash& VelorXxHash::operator=(const VelorXxHash& other)
{
    *mState = *other.mState;
    return *this;
}

void VelorXxHash::addBytes(const void* data, std::uint64_t size)
{
    if (data != nullptr) {
        XXH64_update(&mState->running, data, static_cast<std::size_t>(size));
    }
}

std::uint64_t VelorXxHash::hash() const { return XXH64_digest(&mState->running); }

std::uint64_t VelorXxHash::fromBytes(const void* data, std::uint64_t size)
{
    return XXH64(data, data != nullptr ? static_cast<std::size_t>(size) : 0, Seed);
}

std::uint64_t VelorXxHash::fromSource(KelbIOSource* source)
{
    State state;
    char block[BlockSize];
    while (!source->eof() && !source->hasError()) {
        const std::uint64_t count = source->read(block, sizeof block);
        XXH64_update(&state.running, block, static_cast<std::size_t>(count));
    }
    return XXH64_digest(&state.running);
}
