#pragma once
// Chunked storage of one object inside a scene file.

#include <cstdint>

enum IOResult { IO_OK = 0, IO_END = 1, IO_ERROR = 2 };

/// Writes the chunks of one object. Chunks may nest.
class ISave {
public:
    virtual ~ISave() = default;
    virtual void BeginChunk(uint16_t id) = 0;
    virtual void EndChunk() = 0;
    virtual IOResult Write(const void* data, uint32_t bytes, uint32_t* written) = 0;
};

/// Reads them back.
class ILoad {
public:
    virtual ~ILoad() = default;
    /// Steps into the next chunk; IO_END when there is none.
    virtual IOResult OpenChunk() = 0;
    virtual IOResult CloseChunk() = 0;
    virtual uint16_t CurChunkID() = 0;
    virtual uint32_t CurChunkLength() = 0;
    virtual IOResult Read(void* data, uint32_t bytes, uint32_t* read) = 0;
    /// The callback runs once after the whole scene is loaded, then deletes itself if it likes.
    virtual void RegisterPostLoadCallback(class PostLoadCallback* callback) = 0;
};

/// Work to do once a scene is loaded.
class PostLoadCallback {
public:
    virtual ~PostLoadCallback() = default;
    virtual void proc(ILoad* load) = 0;
};
