// What the stream tests share.
#pragma once

#include "Streams/CMemoryReader.h"
#include "Streams/CMemoryWriteBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace qel {

using Bytes = std::vector<std::uint8_t>;

inline Bytes contentsOf(const CMemoryWriteBuffer& buffer)
{
    CByteBuffer copy;
    buffer.copyTo(copy);
    return {copy.bytes().begin(), copy.bytes().end()};
}

// Bytes that deflate cannot shrink, or a run that it shrinks as far as it can.
inline Bytes noise(std::size_t count, unsigned seed = 1)
{
    std::mt19937 generator(seed);
    Bytes bytes(count);
    std::ranges::generate(bytes, [&] { return static_cast<std::uint8_t>(generator()); });
    return bytes;
}

// A source whose length nobody knows beforehand, and that hands out its bytes in small portions.
class CTrickleReader : public CInputStream
{
public:
    CTrickleReader(const Bytes& bytes, std::size_t portion) : inner_(bytes), portion_(portion) {}

    CError close() override { return {}; }
    CError consume(std::size_t count) override { return inner_.consume(count); }
    CError read(void* buffer, std::size_t count) override { return inner_.read(buffer, count); }
    CError readStreamed(void* buffer, std::size_t& inOutCount) override
    {
        inOutCount = std::min(inOutCount, portion_);
        return inner_.readStreamed(buffer, inOutCount);
    }

private:
    CMemoryReader inner_;
    std::size_t portion_;
};

// A target that takes so many bytes and then fails.
class CFullTarget : public COutputStream
{
public:
    explicit CFullTarget(std::size_t room) : room_(room) {}

    CError write(const void*, std::size_t count) override
    {
        if (count > room_) {
            QEL_FAIL({}, "Disk full.");
        }
        room_ -= count;
        return {};
    }

private:
    std::size_t room_;
};

inline ::testing::AssertionResult succeeded(const CError& error)
{
    return error ? ::testing::AssertionFailure() << error.text() : ::testing::AssertionSuccess();
}

// The last part of the deepest line: the message without file and line.
inline std::string message(const CError& error)
{
    if (!error) {
        return "";
    }
    const std::string line = error.lines().front().toUtf8();
    const std::size_t colon = line.find(" ): ");
    return colon == std::string::npos ? line : line.substr(colon + 4);
}

} // namespace qel
