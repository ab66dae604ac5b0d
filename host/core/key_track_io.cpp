#include "core/key_track_io.h"

#include <cstring>

namespace host {

namespace {

enum : uint16_t { kClassChunk = 0x10, kConstantChunk = 0x20, kKeysChunk = 0x30, kRangeChunk = 0x40, kEndsChunk = 0x50 };

// What is stored of a key, four bytes a piece: time, types, value, tangents.
template <class T>
constexpr uint32_t kKeyBytes = uint32_t(3 * sizeof(int32_t) + sizeof(T) + 2 * sizeof(Tangent<T>));

IOResult WriteChunk(ISave* save, uint16_t id, const void* data, size_t bytes) {
    uint32_t written = 0;
    save->BeginChunk(id);
    const IOResult result = save->Write(data, uint32_t(bytes), &written);
    save->EndChunk();
    return result == IO_OK && written == bytes ? IO_OK : IO_ERROR;
}

bool ReadAll(ILoad* load, void* data, size_t bytes) {
    uint32_t read = 0;
    return load->CurChunkLength() == bytes && load->Read(data, uint32_t(bytes), &read) == IO_OK && read == bytes;
}

// Packs and unpacks plain values one behind the other.
class Bytes {
public:
    explicit Bytes(std::vector<char>& data) : data_(data) {}
    template <class V>
    void Put(const V& v) {
        data_.insert(data_.end(), reinterpret_cast<const char*>(&v), reinterpret_cast<const char*>(&v) + sizeof(V));
    }
    template <class V>
    void Get(V& v) {
        std::memcpy(&v, data_.data() + at_, sizeof(V));
        at_ += sizeof(V);
    }

private:
    std::vector<char>& data_;
    size_t at_ = 0;
};

bool IsTangentType(int32_t type) {
    return type >= 0 && type <= int32_t(TangentType::Auto);
}

bool IsOrt(int32_t type) {
    return type >= ORT_CONSTANT && type <= ORT_LINEAR;
}

template <class T>
bool ReadKeys(ILoad* load, KeyTrack<T>& track) {
    std::vector<char> data(load->CurChunkLength());
    if (data.size() % kKeyBytes<T> != 0 || (!data.empty() && !ReadAll(load, data.data(), data.size()))) return false;
    Bytes bytes(data);
    for (size_t i = 0; i < data.size() / kKeyBytes<T>; ++i) {
        typename KeyTrack<T>::Key key;
        int32_t in = 0, out = 0;
        bytes.Get(key.time);
        bytes.Get(in);
        bytes.Get(out);
        bytes.Get(key.val);
        bytes.Get(key.intan);
        bytes.Get(key.outtan);
        if (!IsTangentType(in) || !IsTangentType(out)) return false;
        key.in = TangentType(in), key.out = TangentType(out);
        track.Keys().push_back(key);
    }
    track.Sort();
    return true;
}

template <class T>
bool ReadChunk(ILoad* load, KeyTrack<T>& track, bool& bezier) {
    int32_t pair[2] = {};
    switch (load->CurChunkID()) {
    case kClassChunk:
        if (!ReadAll(load, pair, sizeof(int32_t))) return false;
        bezier = pair[0] != 0;
        return true;
    case kConstantChunk: {
        T value{};
        if (!ReadAll(load, &value, sizeof(T))) return false;
        track.SetConstant(value);
        return true;
    }
    case kKeysChunk:
        return ReadKeys(load, track);
    case kRangeChunk:
        if (!ReadAll(load, pair, sizeof(pair))) return false;
        track.SetRange({pair[0], pair[1]});
        return true;
    case kEndsChunk:
        if (!ReadAll(load, pair, sizeof(pair)) || !IsOrt(pair[0]) || !IsOrt(pair[1])) return false;
        track.SetOrt(true, pair[0]);
        track.SetOrt(false, pair[1]);
        return true;
    default:
        return true;
    }
}

} // namespace

template <class T>
IOResult SaveTrack(ISave* save, const KeyTrack<T>& track, bool bezier) {
    static_assert(sizeof(T) % 4 == 0 && std::is_trivially_copyable_v<T>);
    std::vector<char> data;
    Bytes bytes(data);
    for (const auto& key : track.Keys()) {
        bytes.Put(key.time);
        bytes.Put(int32_t(key.in));
        bytes.Put(int32_t(key.out));
        bytes.Put(key.val);
        bytes.Put(key.intan);
        bytes.Put(key.outtan);
    }
    const int32_t keyClass = bezier, ends[2] = {track.Ort(true), track.Ort(false)};
    const int32_t range[2] = {track.EditedRange().Start(), track.EditedRange().End()};
    IOResult result = WriteChunk(save, kClassChunk, &keyClass, sizeof(keyClass));
    if (result == IO_OK) result = WriteChunk(save, kConstantChunk, &track.Constant(), sizeof(T));
    if (result == IO_OK) result = WriteChunk(save, kKeysChunk, data.data(), data.size());
    if (result == IO_OK) result = WriteChunk(save, kRangeChunk, range, sizeof(range));
    if (result == IO_OK) result = WriteChunk(save, kEndsChunk, ends, sizeof(ends));
    return result;
}

template <class T>
IOResult LoadTrack(ILoad* load, KeyTrack<T>& track, bool& bezier) {
    for (;;) {
        const IOResult next = load->OpenChunk();
        if (next == IO_END) return IO_OK;
        if (next != IO_OK) return next;
        const bool good = ReadChunk(load, track, bezier);
        if (load->CloseChunk() != IO_OK || !good) return IO_ERROR;
    }
}

template IOResult SaveTrack(ISave*, const KeyTrack<float>&, bool);
template IOResult SaveTrack(ISave*, const KeyTrack<Point3>&, bool);
template IOResult SaveTrack(ISave*, const KeyTrack<AColor>&, bool);
template IOResult SaveTrack(ISave*, const KeyTrack<Quat>&, bool);
template IOResult LoadTrack(ILoad*, KeyTrack<float>&, bool&);
template IOResult LoadTrack(ILoad*, KeyTrack<Point3>&, bool&);
template IOResult LoadTrack(ILoad*, KeyTrack<AColor>&, bool&);
template IOResult LoadTrack(ILoad*, KeyTrack<Quat>&, bool&);

} // namespace host
