#pragma once
// Curve controls: curves as animatable objects of the scene.

#include <array>
#include <string>
#include <vector>

#include "CurveCtl/CurveShape.h"
#include "sdk/bitarray.h"
#include "sdk/color.h"
#include "sdk/iparamb2.h"
#include "sdk/properties.h"
#include "sdk/ref.h"

inline constexpr Class_ID CURVECTL_CLASS_ID{0x5df038a1, 0x4ff748fe};
inline constexpr Class_ID CURVEKNOT_CLASS_ID{0x78040a9c, 0x059a6d01};

// A knot's parameters: indices and identifiers in its block.
enum CurveKnotParam { KNOT_X = 0, KNOT_Y = 1, KNOT_TYPE = 2 };

/// One knot of a curve. Its position and type live in a parameter block; x and y may be animated.
class CurveKnot : public ReferenceTarget {
public:
    CurveKnot() : CurveKnot(0.0f, 0.0f, CURVE_SMOOTH) {}
    CurveKnot(float x, float y, int type);
    ~CurveKnot() override { DeleteAllRefs(); }

    /// The stored values at a time.
    float X(TimeValue t) const;
    float Y(TimeValue t) const;
    int Type() const;
    void SetX(TimeValue t, float x);
    void SetY(TimeValue t, float y);
    void SetType(int type);

    /// Brings the cached values to `t` and narrows `valid` to where they hold.
    const CurveShapeKnot& Evaluate(TimeValue t, Interval& valid);

    /// The knot as its curve last evaluated it: corrected into the curve's ranges, with its spline coefficients.
    CurveShapeKnot evaluated;
    /// A locked knot cannot be deleted. Not stored anywhere.
    bool locked = false;

    /// "X", "Y", "KType"; null for any other index.
    static const char* ParamName(int index);

    Class_ID ClassID() override { return CURVEKNOT_CLASS_ID; }
    SClass_ID SuperClassID() override { return REF_MAKER_CLASS_ID; }
    void GetClassName(TSTR& s) override;
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? block_ : nullptr; }
    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                               RefMessage message) override;
    int NumSubs() override { return 1; }
    Animatable* SubAnim(int i) override { return i == 0 ? block_ : nullptr; }
    TSTR SubAnimName(int i) override;
    int NumParamBlocks() override { return 1; }
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? block_ : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return id == 0 ? block_ : nullptr; }
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    struct WithoutBlock {};
    explicit CurveKnot(WithoutBlock) {}

    IParamBlock2* block_ = nullptr;
    CurveShapeKnot stored_; ///< values of the block, valid over valid_
    Interval valid_ = NEVER;
};

/// What an open editor window of a curve answers to.
class ICurveEditor {
public:
    virtual ~ICurveEditor() = default;
    virtual void Redraw() = 0;
};

/// A curve y = f(x) over a fixed rectangle with up to kMaxCurveKnots knots in ascending x. Main thread only; generation
/// reads the plain Shape().
class CurveCtl : public ReferenceTarget, public IScriptProperties {
public:
    /// Two Corner knots, (xMin, yMin) and (xMax, yMax). Switched off.
    CurveCtl(float xMin, float xMax, float yMin, float yMax);
    CurveCtl() : CurveCtl(0.0f, 1.0f, 0.0f, 1.0f) {}
    ~CurveCtl() override { DeleteAllRefs(); }

    int KnotCount() const { return int(knots_.size()); }
    /// Null outside 0 .. KnotCount() - 1, and for a slot that a scene being loaded has not filled yet.
    CurveKnot* Knot(int i) const { return i >= 0 && i < KnotCount() ? knots_[size_t(i)] : nullptr; }

    // Editing. Every change tells the dependents.

    /// Moves a knot; relative adds to its stored values. y is clamped to the y range. An inner knot's x is clamped
    /// between its neighbours, 0.001 apart; the first and last knot keep theirs. False when there is no such knot.
    bool SetKnot(TimeValue t, int index, float x, float y, bool relative);
    /// Inserts a knot of the default type behind the last knot whose x at time 0 lies below `x`, never first. x and y
    /// are not checked. The new index, or -1 when the curve is full.
    int AddKnot(float x, float y);
    /// Deletes an inner knot that is not locked; does nothing for any other.
    void DeleteKnot(int index);
    /// Deletes the selected inner knots in ascending order. intended: stops at the first locked one and then neither
    /// rebuilds nor tells, though knots before it are gone.
    void DeleteSelected();
    void SetKnotType(int index, int type);
    /// `state` below 0 toggles.
    void SetLock(int index, int state);
    /// `flag` below 0 toggles.
    void SetEnabled(int flag);
    void SetNoise(bool use, float size, float density, float phase);
    /// Mirrors about the middle of the x range, at the last evaluation time. Types and locks stay where they are.
    void FlipHorizontal();
    /// Mirrors about the middle of the y range.
    void FlipVertical();
    /// Takes over the source's knots (as copies), selection and noise; keeps its own ranges, flags and texts.
    void Copy(const CurveCtl& source);

    // Evaluation.

    /// Brings the curve to `t` and intersects `valid` with the interval over which it holds.
    void Update(TimeValue t, Interval& valid);
    /// Value at (t, x); outside the first and last knot their y.
    float GetValue(TimeValue t, float x);
    /// The plain curve at `t`. Stays valid until the next change or evaluation.
    const CurveShape& Shape(TimeValue t);
    /// Switched on and with knots: whether owners that honour the switch use it.
    bool Active() const { return enabled_ && !knots_.empty(); }
    TimeValue LastTime() const { return lastTime_; }

    // Plain properties.
    bool Enabled() const { return enabled_ != 0; }
    bool UseNoise() const { return shape_.useNoise; }
    float NoiseSize() const { return shape_.noiseSize; }
    float NoiseDensity() const { return shape_.noiseDensity; }
    float NoisePhase() const { return shape_.noisePhase; }
    float XMin() const { return shape_.xMin; }
    float XMax() const { return shape_.xMax; }
    float YMin() const { return shape_.yMin; }
    float YMax() const { return shape_.yMax; }
    const std::string& Title() const { return title_; }
    void SetTitle(const std::string& text) { title_ = text; }
    int Marks() const { return marks_; }
    /// Number of vertical division lines in the editor; none for 0 and 1.
    void SetMarks(int n);
    /// The colour component that the editor's colour bar shows (-1 none), and its colour.
    void SetColorBar(int component, const Color& color);
    int ColorBarComponent() const { return barComponent_; }
    const Color& ColorBarColor() const { return barColor_; }
    void SetEditor(ICurveEditor* editor) { editor_ = editor; }

    BitArray selection;             ///< one bit a knot
    int defaultType = CURVE_SMOOTH; ///< of new knots
    int viewUpdateMode = 1;         ///< 1 on mouse release, 2 on mouse drag
    std::string xLabelFormat = "%.2f", yLabelFormat = "%.2f";
    std::array<float, 4> displayRange{}; ///< x from, x to, y from, y to; 0, 0 = the curve's own

    /// While on, changes of knots are not passed on. Returns the former state.
    bool SetBatch(bool on);

    // Settings files: one section a curve. Values are those at the host's current time.
    void SaveToINI(const char* file, const char* section);
    /// False, changing nothing, when the section has no usable knot count (missing, not a number, below 0, above the
    /// limit).
    bool LoadFromINI(const char* file, const char* section);

    // Script properties and operations.
    std::vector<TSTR> ListProperties() override;
    bool GetProperty(const TSTR& name, ScriptValue& value, TSTR& error) override;
    bool SetProperty(const TSTR& name, const ScriptValue& value, TSTR& error) override;
    bool Call(const TSTR& name, const std::vector<ScriptValue>& args, ScriptValue& result, TSTR& error) override;

    Class_ID ClassID() override { return CURVECTL_CLASS_ID; }
    void* GetInterface(uint32_t id) override;
    SClass_ID SuperClassID() override { return REF_MAKER_CLASS_ID; }
    void GetClassName(TSTR& s) override;
    int NumRefs() override { return KnotCount(); }
    RefTargetHandle GetReference(int i) override { return Knot(i); }
    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                               RefMessage message) override;
    int NumSubs() override { return KnotCount(); }
    Animatable* SubAnim(int i) override { return Knot(i); }
    TSTR SubAnimName(int i) override;
    IOResult Save(ISave* save) override;
    IOResult Load(ILoad* load) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    void InsertKnot(int index, CurveKnot* knot);
    void RemoveKnot(int index);
    void RemoveAllKnots();
    /// Puts `knots` in place of all knots; one message to the dependents.
    void ReplaceKnots(const std::vector<CurveShapeKnot>& knots);
    void SetSlotCount(int n);
    /// Evaluates all knots at `t` and fits the shape.
    void Rebuild(TimeValue t);
    /// Rebuilds at the last time and tells the dependents.
    void RebuildAndNotify();
    void Changed();
    bool LoadChunk(ILoad* load);
    void ReadSection(const char* file, const char* section, int count);

    int enabled_ = 0;
    bool batch_ = false;
    std::vector<CurveKnot*> knots_;
    CurveShape shape_;
    Interval valid_ = NEVER;
    std::string title_;
    int marks_ = 0;
    int barComponent_ = -1;
    Color barColor_;
    TimeValue lastTime_ = 0;
    ICurveEditor* editor_ = nullptr;
};
