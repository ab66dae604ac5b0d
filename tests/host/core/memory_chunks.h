#pragma once
// Chunked storage in memory: 16-bit id, 32-bit length, data.

#include <cstring>
#include <string>
#include <vector>

#include "sdk/iosave.h"

class MemorySave : public ISave {
public:
    std::string bytes;
    void BeginChunk(uint16_t id) override {
        bytes.append(reinterpret_cast<const char*>(&id), 2);
        starts_.push_back(bytes.size());
        bytes.append(4, '\0');
    }
    void EndChunk() override {
        const uint32_t length = uint32_t(bytes.size() - starts_.back() - 4);
        std::memcpy(bytes.data() + starts_.back(), &length, 4);
        starts_.pop_back();
    }
    IOResult Write(const void* data, uint32_t size, uint32_t* written) override {
        bytes.append(static_cast<const char*>(data), size);
        *written = size;
        return IO_OK;
    }

private:
    std::vector<size_t> starts_;
};

class MemoryLoad : public ILoad {
public:
    explicit MemoryLoad(const std::string& bytes) : bytes_(bytes) { ends_.push_back(bytes.size()); }
    IOResult OpenChunk() override {
        if (at_ == ends_.back()) return IO_END;
        if (ends_.back() - at_ < 6) return IO_ERROR;
        std::memcpy(&id_, bytes_.data() + at_, 2);
        std::memcpy(&length_, bytes_.data() + at_ + 2, 4);
        at_ += 6;
        if (length_ > ends_.back() - at_) return IO_ERROR;
        ends_.push_back(at_ + length_);
        return IO_OK;
    }
    IOResult CloseChunk() override {
        at_ = ends_.back();
        ends_.pop_back();
        return IO_OK;
    }
    uint16_t CurChunkID() override { return id_; }
    uint32_t CurChunkLength() override { return length_; }
    IOResult Read(void* data, uint32_t size, uint32_t* read) override {
        if (size > ends_.back() - at_) return IO_ERROR;
        std::memcpy(data, bytes_.data() + at_, size);
        at_ += size;
        *read = size;
        return IO_OK;
    }
    void RegisterPostLoadCallback(PostLoadCallback*) override {}

private:
    const std::string& bytes_;
    size_t at_ = 0;
    uint16_t id_ = 0;
    uint32_t length_ = 0;
    std::vector<size_t> ends_;
};
