// Curve controls in scene files: one four-byte chunk a field, in a fixed order. The knots are references and stored by
// the host.

#include "CurveCtl/CurveCtl.h"

namespace {

enum CurveChunk : uint16_t {
    CHUNK_COUNT = 0x10,
    CHUNK_ENABLED = 0x11,
    CHUNK_DEFAULT_TYPE = 0x12,
    CHUNK_VIEW_UPDATE = 0x13,
    CHUNK_XMIN = 0x100,
    CHUNK_XMAX = 0x110,
    CHUNK_YMIN = 0x120,
    CHUNK_YMAX = 0x130,
    CHUNK_USE_NOISE = 0x140,
    CHUNK_NOISE_SIZE = 0x150,
    CHUNK_NOISE_DENSITY = 0x160,
    CHUNK_NOISE_PHASE = 0x170,
};

/// Writes chunks until one fails.
class ChunkWriter {
public:
    explicit ChunkWriter(ISave* save) : save_(save) {}
    template <class T>
    void Put(uint16_t id, T value) {
        static_assert(sizeof(T) == 4);
        if (result_ != IO_OK) return;
        save_->BeginChunk(id);
        uint32_t written = 0;
        result_ = save_->Write(&value, 4, &written);
        if (result_ == IO_OK && written != 4) result_ = IO_ERROR;
        save_->EndChunk();
    }
    IOResult Result() const { return result_; }

private:
    ISave* save_;
    IOResult result_ = IO_OK;
};

/// Reads a four-byte value; on failure `value` stays.
template <class T>
bool Get(ILoad* load, T& value) {
    static_assert(sizeof(T) == 4);
    T read{};
    uint32_t bytes = 0;
    if (load->Read(&read, 4, &bytes) != IO_OK || bytes != 4) return false;
    value = read;
    return true;
}

} // namespace

IOResult CurveCtl::Save(ISave* save) {
    ChunkWriter w(save);
    w.Put(CHUNK_ENABLED, int32_t(enabled_));
    w.Put(CHUNK_VIEW_UPDATE, int32_t(viewUpdateMode));
    w.Put(CHUNK_DEFAULT_TYPE, int32_t(defaultType));
    w.Put(CHUNK_COUNT, int32_t(KnotCount()));
    w.Put(CHUNK_XMIN, shape_.xMin);
    w.Put(CHUNK_XMAX, shape_.xMax);
    w.Put(CHUNK_YMIN, shape_.yMin);
    w.Put(CHUNK_YMAX, shape_.yMax);
    w.Put(CHUNK_USE_NOISE, int32_t(shape_.useNoise));
    w.Put(CHUNK_NOISE_SIZE, shape_.noiseSize);
    w.Put(CHUNK_NOISE_DENSITY, shape_.noiseDensity);
    w.Put(CHUNK_NOISE_PHASE, shape_.noisePhase);
    return w.Result();
}

bool CurveCtl::LoadChunk(ILoad* load) {
    switch (load->CurChunkID()) {
    case CHUNK_ENABLED:
        return Get(load, enabled_);
    case CHUNK_VIEW_UPDATE:
        return Get(load, viewUpdateMode);
    case CHUNK_DEFAULT_TYPE:
        return Get(load, defaultType);
    case CHUNK_XMIN:
        return Get(load, shape_.xMin);
    case CHUNK_XMAX:
        return Get(load, shape_.xMax);
    case CHUNK_YMIN:
        return Get(load, shape_.yMin);
    case CHUNK_YMAX:
        return Get(load, shape_.yMax);
    case CHUNK_NOISE_SIZE:
        return Get(load, shape_.noiseSize);
    case CHUNK_NOISE_DENSITY:
        return Get(load, shape_.noiseDensity);
    case CHUNK_NOISE_PHASE:
        return Get(load, shape_.noisePhase);
    case CHUNK_USE_NOISE: {
        int32_t on = shape_.useNoise;
        const bool ok = Get(load, on);
        shape_.useNoise = on != 0;
        return ok;
    }
    case CHUNK_COUNT: {
        int32_t count = 0;
        if (!Get(load, count) || count < 0 || count > kMaxCurveKnots) return false;
        SetSlotCount(count);
        return true;
    }
    default:
        return true;
    }
}

IOResult CurveCtl::Load(ILoad* load) {
    IOResult result;
    while ((result = load->OpenChunk()) == IO_OK) {
        if (!LoadChunk(load)) result = IO_ERROR;
        load->CloseChunk();
        if (result != IO_OK) break;
    }
    valid_.SetEmpty();
    return result == IO_END ? IO_OK : result;
}
