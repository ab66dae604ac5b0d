#pragma once
// Bucket generators: they cut a picture into rectangles and tell which one holds a pixel.

/// Rectangles that cover a picture once. Coordinates are non-negative pixels.
class IBucketGenerator {
public:
    virtual ~IBucketGenerator() = default;
    /// Edge length in pixels.
    virtual int GetBucketSize() const = 0;
    /// Sets the picture's size.
    virtual void Setup(int width, int height) = 0;
    virtual int GetBucketCount() const = 0;
    virtual int GetColumns() const = 0;
    virtual int GetRows() const = 0;
    /// Number of the bucket that holds (x, y).
    virtual int GetBucketIndex(int x, int y) const = 0;
    /// Rectangle of the bucket that holds (x, y).
    virtual void GetBucketRect(int x, int y, int& x0, int& y0, int& w, int& h) const = 0;
    virtual void ColumnSpan(int x, int& start, int& extent) const = 0;
    virtual void RowSpan(int y, int& start, int& extent) const = 0;
    virtual int ColumnOf(int x) const = 0;
    virtual int RowOf(int y) const = 0;
};

/// The whole picture as one bucket. The last column and row of derived kinds take what the division leaves over.
class BucketGen : public IBucketGenerator {
public:
    explicit BucketGen(int size) : size_(size) {}
    int GetBucketSize() const override { return size_; }
    void Setup(int width, int height) override;
    int GetBucketCount() const override { return columns_ * rows_; }
    int GetColumns() const override { return columns_; }
    int GetRows() const override { return rows_; }
    int GetBucketIndex(int x, int y) const override { return 0; }
    void GetBucketRect(int x, int y, int& x0, int& y0, int& w, int& h) const override;
    void ColumnSpan(int x, int& start, int& extent) const override;
    void RowSpan(int y, int& start, int& extent) const override;
    int ColumnOf(int x) const override;
    int RowOf(int y) const override;

protected:
    /// How many buckets fit along `extent`: at least two whole ones, or one that takes everything.
    int Divisions(int extent) const;

    int size_;
    int width_ = 1, height_ = 1;
    int columns_ = 1, rows_ = 1;
};

/// Stripes over the full width.
class BucketGenStripeHoriz final : public BucketGen {
public:
    using BucketGen::BucketGen;
    void Setup(int width, int height) override;
    int GetBucketIndex(int x, int y) const override { return RowOf(y); }
    void GetBucketRect(int x, int y, int& x0, int& y0, int& w, int& h) const override;
};

/// Squares.
class BucketGenSquare final : public BucketGen {
public:
    using BucketGen::BucketGen;
    void Setup(int width, int height) override;
    int GetBucketIndex(int x, int y) const override { return RowOf(y) * GetColumns() + ColumnOf(x); }
    void GetBucketRect(int x, int y, int& x0, int& y0, int& w, int& h) const override;
};
