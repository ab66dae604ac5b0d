// Face selection by whole object, current selection, material id, named set, or material id list.

#include "Base/FaceSel.h"

#include <climits>

namespace {

// Appends a digit; ids beyond the integer range stay at its end.
int AppendDigit(int number, char digit) {
    const long long n = (long long)number * 10 + (digit - '0');
    return n > INT_MAX ? INT_MAX : int(n);
}

// One entry of an id list while it is read.
struct Entry {
    enum State { Empty, From, To, Skipping } state = Empty;
    bool hasFrom = false, hasTo = false;
    MtlIdRange range;

    void Take(char c) {
        const bool digit = c >= '0' && c <= '9';
        if (state == Skipping) return;
        if (digit && state == To) {
            range.to = AppendDigit(range.to, c);
        } else if (digit) {
            state = From, hasFrom = true;
            range.from = AppendDigit(range.from, c);
        } else if (c == '-' && state == From) {
            state = To, hasTo = true;
        } else {
            state = Skipping;
        }
    }
    void CloseInto(std::vector<MtlIdRange>& out) {
        if (hasFrom) out.push_back({range.from, hasTo ? range.to : range.from});
        *this = Entry();
    }
};

} // namespace

std::vector<MtlIdRange> ParseMtlIdList(const std::string& text) {
    std::vector<MtlIdRange> ranges;
    Entry entry;
    for (const char c : text) {
        if (c == ',')
            entry.CloseInto(ranges);
        else
            entry.Take(c);
    }
    entry.CloseInto(ranges);
    return ranges;
}

FaceSelectionResult ComputeFaceSelection(const FaceSelection& selection, const Mesh& mesh, IEmitterSource& emitter) {
    FaceSelectionResult result;
    const int n = mesh.getNumFaces();
    result.faces.SetSize(n);
    switch (selection.type) {
    case 0:
        result.faces.SetAll();
        break;
    case 1:
        result.faces = mesh.faceSel;
        result.faces.SetSize(n);
        break;
    case 2:
        for (int f = 0; f < n; ++f) result.faces.Set(f, mesh.faces[size_t(f)].MatID() == selection.mtlId - 1);
        break;
    case 3: {
        BitArray set;
        result.found = emitter.NamedFaceSet(selection.namedSet, set);
        if (result.found) {
            set.SetSize(n);
            result.faces = set;
        }
        break;
    }
    case 4: {
        const std::vector<MtlIdRange> ranges = ParseMtlIdList(selection.mtlIds);
        for (int f = 0; f < n; ++f) {
            const int id = mesh.faces[size_t(f)].MatID() + 1;
            for (const MtlIdRange& r : ranges)
                if (id >= r.from && id <= r.to) result.faces.Set(f);
        }
        break;
    }
    }
    return result;
}
