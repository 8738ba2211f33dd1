#pragma once

#include <algorithm>
#include <exception>
#include <ios>
#include <streambuf>

/// Hands on the bytes of another buffer, and knows whether all of them were read. The flags of a stream do
/// not show it: whoever reads may have set or cleared them.
///
/// Seeking only records the position; the other buffer is moved by the next read that does not follow the one
/// before it. So the position and the size can be asked even of an input that cannot seek.
class WatchedInput : public std::streambuf
{
public:
    explicit WatchedInput(std::streambuf& input)
        : mInput(input)
        , mSize(std::max<off_type>(input.pubseekoff(0, std::ios::end, std::ios::in), 0))
    {
        moveInput(0);
    }

    bool wasRead() const { return mWasRead; }

    /// Whether every byte up to the end was read, and at least as many as there were at first. Not every
    /// standard library distinguishes a failed read from the end; files such as those in `/proc` have no
    /// size.
    bool wasReadToEnd() const { return mIsEndReached && !mHasFailed && mBytesInOrder >= mSize; }

protected:
    int_type underflow() override
    {
        const int_type next = guarded([&] { return mInput.sgetc(); }, traits_type::eof());
        advance(0, isEnd(next) ? 1 : 0);
        return next;
    }

    int_type uflow() override
    {
        const int_type next = guarded([&] { return mInput.sbumpc(); }, traits_type::eof());
        advance(isEnd(next) ? 0 : 1, 1);
        return next;
    }

    std::streamsize xsgetn(char* bytes, std::streamsize count) override
    {
        const std::streamsize read = guarded([&] { return mInput.sgetn(bytes, count); }, std::streamsize(0));
        advance(read, count);
        return read;
    }

    pos_type seekoff(off_type offset, std::ios::seekdir from, std::ios::openmode) override
    {
        const off_type start = from == std::ios::end ? mSize : from == std::ios::cur ? mPosition : 0;
        if (start + offset < 0) {
            return pos_type(off_type(-1));
        }
        return mPosition = start + offset;
    }

    pos_type seekpos(pos_type position, std::ios::openmode which) override
    {
        return seekoff(off_type(position), std::ios::beg, which);
    }

private:
    static bool isEnd(int_type next) { return traits_type::eq_int_type(next, traits_type::eof()); }

    bool moveInput(off_type position)
    {
        return mInput.pubseekoff(position, std::ios::beg, std::ios::in) != pos_type(off_type(-1));
    }

    /// The result of `read`, or `failure` where it raises an exception, as standard libraries may on a failed
    /// read.
    template <typename Read, typename Result>
    Result guarded(const Read& read, Result failure)
    {
        mWasRead = true;
        try {
            if (mPosition == mInputPosition || moveInput(mPosition)) {
                return read();
            }
        } catch (const std::exception&) {
            // Counts like a failed move.
        }
        mHasFailed = true;
        return failure;
    }

    void advance(std::streamsize read, std::streamsize wanted)
    {
        const bool isInOrder = mPosition <= mBytesInOrder;
        mPosition += read;
        mInputPosition = mPosition;
        mBytesInOrder = isInOrder ? std::max(mBytesInOrder, mPosition) : mBytesInOrder;
        mIsEndReached = mIsEndReached || (read < wanted && mPosition == mBytesInOrder);
    }

    std::streambuf& mInput;
    off_type mSize;
    off_type mPosition = 0;      ///< Where the next read starts.
    off_type mInputPosition = 0; ///< Where the other buffer stands.
    off_type mBytesInOrder = 0;  ///< Every byte in front of this one was read.
    bool mWasRead = false;
    bool mIsEndReached = false;
    bool mHasFailed = false;
};
