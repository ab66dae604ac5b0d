// Numbers out of a glTF file's buffers.

#include <algorithm>
#include <cmath>
#include <cstring>

#include "import/file_error.h"
#include "import/gltf_parts.h"

namespace host {

namespace {

// What a file may make of its bytes: many accessors may read the same ones.
constexpr size_t kMostValues = size_t(1) << 28, kMostValuesWithoutData = size_t(1) << 20;

// A stretch of a buffer: elements of `width` bytes, `stride` apart.
struct Elements {
    const unsigned char* at = nullptr;
    size_t stride = 0;
};

class AccessorReader {
public:
    AccessorReader(GltfFile& gltf, int index, const std::string& what) : gltf_(gltf), what_(what) {
        if (index < 0 || size_t(index) >= gltf.model.accessors.size())
            Fail("names accessor " + std::to_string(index) + ", expected 0 .. " +
                 std::to_string(int64_t(gltf.model.accessors.size()) - 1));
        accessor_ = &gltf.model.accessors[size_t(index)];
        size_ = ComponentSize(accessor_->componentType);
    }

    // Calls put(i, k, value) for every component.
    template <class Put>
    void Read(int components, Put&& put) {
        if (tinygltf::GetNumComponentsInType(uint32_t(accessor_->type)) != components)
            Fail("has elements of another kind, expected " + std::to_string(components) + " numbers each");
        const size_t most = accessor_->bufferView < 0 ? kMostValuesWithoutData : kMostValues;
        if (accessor_->count > most / size_t(components) ||
            gltf_.values + accessor_->count * size_t(components) > kMostValues)
            Fail("has " + std::to_string(accessor_->count) + " elements, which is too much");
        gltf_.values += accessor_->count * size_t(components);
        if (accessor_->bufferView >= 0) {
            const size_t width = size_ * size_t(components);
            const Elements from = Stretch(accessor_->bufferView, accessor_->byteOffset, accessor_->count, width, true);
            for (size_t i = 0; i < accessor_->count; ++i)
                for (int k = 0; k < components; ++k) put(i, k, Value(from.at + i * from.stride + size_t(k) * size_));
        }
        if (accessor_->sparse.isSparse) ReadSparse(components, put);
    }
    size_t Count() const { return accessor_->count; }
    bool IsFloat() const { return accessor_->componentType == TINYGLTF_COMPONENT_TYPE_FLOAT; }

private:
    [[noreturn]] void Fail(const std::string& text) const { FailAt(gltf_.file, 0, what_ + " " + text); }

    size_t ComponentSize(int type) const {
        switch (type) {
        case TINYGLTF_COMPONENT_TYPE_BYTE:
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
            return 1;
        case TINYGLTF_COMPONENT_TYPE_SHORT:
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
            return 2;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
        case TINYGLTF_COMPONENT_TYPE_FLOAT:
            return 4;
        default:
            Fail("has numbers of an unknown kind");
        }
    }

    Elements Stretch(int view, size_t offset, size_t count, size_t width, bool strided) const {
        const auto& views = gltf_.model.bufferViews;
        if (view < 0 || size_t(view) >= views.size()) Fail("lies in an unknown part of the buffers");
        const tinygltf::BufferView& v = views[size_t(view)];
        if (v.buffer < 0 || size_t(v.buffer) >= gltf_.model.buffers.size()) Fail("lies in an unknown buffer");
        const auto& data = gltf_.model.buffers[size_t(v.buffer)].data;
        if (v.byteOffset > data.size() || v.byteLength > data.size() - v.byteOffset)
            Fail("lies in a part outside its buffer");
        const size_t stride = strided && v.byteStride > 0 ? v.byteStride : width;
        const bool fits = count == 0 || (offset <= v.byteLength && width <= v.byteLength - offset &&
                                         (count - 1) <= (v.byteLength - offset - width) / std::max<size_t>(stride, 1));
        if (!fits) Fail("reaches beyond its buffer, expected more bytes");
        return {data.data() + v.byteOffset + offset, stride};
    }

    double Number(const unsigned char* at, int type) const {
        const auto get = [&](auto v) {
            std::memcpy(&v, at, sizeof v);
            return double(v);
        };
        switch (type) {
        case TINYGLTF_COMPONENT_TYPE_BYTE:
            return get(int8_t());
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
            return get(uint8_t());
        case TINYGLTF_COMPONENT_TYPE_SHORT:
            return get(int16_t());
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
            return get(uint16_t());
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
            return get(uint32_t());
        default:
            return get(float());
        }
    }

    double Value(const unsigned char* at) const {
        const double v = Number(at, accessor_->componentType);
        if (!accessor_->normalized || IsFloat()) return v;
        switch (accessor_->componentType) {
        case TINYGLTF_COMPONENT_TYPE_BYTE:
            return std::max(v / 127.0, -1.0);
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
            return v / 255.0;
        case TINYGLTF_COMPONENT_TYPE_SHORT:
            return std::max(v / 32767.0, -1.0);
        default:
            return v / 65535.0;
        }
    }

    template <class Put>
    void ReadSparse(int components, Put&& put) {
        const auto& sparse = accessor_->sparse;
        if (sparse.count < 0 || sparse.indices.byteOffset < 0 || sparse.values.byteOffset < 0)
            Fail("has changed elements that cannot be read");
        const size_t count = size_t(sparse.count), indexSize = ComponentSize(sparse.indices.componentType);
        const size_t width = size_ * size_t(components);
        const Elements indices =
            Stretch(sparse.indices.bufferView, size_t(sparse.indices.byteOffset), count, indexSize, false);
        const Elements values =
            Stretch(sparse.values.bufferView, size_t(sparse.values.byteOffset), count, width, false);
        for (size_t i = 0; i < count; ++i) {
            const double index = Number(indices.at + i * indexSize, sparse.indices.componentType);
            if (!(index >= 0 && index < double(accessor_->count))) Fail("changes an element that it does not have");
            for (int k = 0; k < components; ++k)
                put(size_t(index), k, Value(values.at + i * width + size_t(k) * size_));
        }
    }

    GltfFile& gltf_;
    const std::string& what_;
    const tinygltf::Accessor* accessor_ = nullptr;
    size_t size_ = 0;
};

} // namespace

std::vector<float> GltfFloats(GltfFile& gltf, int accessor, int components, const std::string& what) {
    AccessorReader reader(gltf, accessor, what);
    std::vector<float> out;
    reader.Read(components, [&](size_t i, int k, double v) {
        if (out.empty()) out.resize(reader.Count() * size_t(components));
        out[i * size_t(components) + size_t(k)] = float(v);
    });
    out.resize(reader.Count() * size_t(components));
    return out;
}

std::vector<Point3> GltfPoints(GltfFile& gltf, int accessor, const std::string& what) {
    const std::vector<float> numbers = GltfFloats(gltf, accessor, 3, what);
    std::vector<Point3> points(numbers.size() / 3);
    for (size_t i = 0; i < points.size(); ++i) points[i] = {numbers[3 * i], numbers[3 * i + 1], numbers[3 * i + 2]};
    return points;
}

std::vector<uint32_t> GltfIndices(GltfFile& gltf, int accessor, int components, const std::string& what) {
    AccessorReader reader(gltf, accessor, what);
    if (reader.IsFloat()) FailAt(gltf.file, 0, what + " has fractions, expected whole numbers");
    std::vector<uint32_t> out;
    reader.Read(components, [&](size_t i, int k, double v) {
        if (out.empty()) out.resize(reader.Count() * size_t(components));
        if (v < 0) FailAt(gltf.file, 0, what + " has a negative number, expected others");
        out[i * size_t(components) + size_t(k)] = uint32_t(v);
    });
    out.resize(reader.Count() * size_t(components));
    return out;
}

int GltfComponents(const GltfFile& gltf, int accessor) {
    if (accessor < 0 || size_t(accessor) >= gltf.model.accessors.size()) return 0;
    return std::max(tinygltf::GetNumComponentsInType(uint32_t(gltf.model.accessors[size_t(accessor)].type)), 0);
}

} // namespace host
