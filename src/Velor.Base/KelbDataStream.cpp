#include "KelbDataStream.h"

KelbDataStream::KelbDataStream(KelbIOSource* source, std::uint16_t access)
    : IDataStream(access)
    , mSource(source)
{}

std::uint64_t KelbDataStream::read(void* buffer, std::uint64_t count) { return mSource->read(buffer, count); }

std::uint64_t KelbDataStream::write(const void* buffer, std::uint64_t count)
{
    return mSource->write(buffer, count);
}

void KelbDataStream::skip(std::int32_t offset) { mSource->skip(offset); }

void KelbDataStream::seek(std::uint64_t position) { mSource->seek(position); }

std::uint64_t KelbDataStream::tell() const { return mSource->tell(); }

bool KelbDataStream::eof() const { return mSource->eof(); }

void KelbDataStream::close() {}
