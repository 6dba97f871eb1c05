// Affine matrices for drawing: THtMatrixData (a plain record with its kind,
// which the fast paths test), the object wrapper THtCustomMatrix and the
// save/restore stack THtCustomMatrixStack.
//
//   ht::THtMatrixData m;
//   m.Reset();
//   m.Scale(2, 2);                                 // kind mfScale
//   m.Translate(10, 0);                            // applied after the scale
//   ht::TPointF p = m.TransformPoint({1, 1});      // {12, 2}
//   ht::THtMatrixData inv = m;
//   inv.Inverse();                                 // a singular matrix becomes identity
//   ht::hstring css = m.AsString(true);            // "matrix(2,0,0,2,10,0)"
//
// Points are row vectors: x' = x*m11 + y*m21 + dx, y' = x*m12 + y*m22 + dy.
// Multiply(M) makes the matrix that applies M first and the old self after it.
#pragma once

#include "htcore/foundation/geometry.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"
#include "htcore/foundation/object_list.h"

#include <cstdint>

namespace ht {

// Single-precision comparison with a relative tolerance; Epsilon 0 takes
// 1e-4 of the smaller magnitude, at least 1e-4.
inline bool SameValue(float A, float B, float Epsilon = 0) noexcept {
  float a = A < 0 ? -A : A, b = B < 0 ? -B : B;
  if (Epsilon == 0) {
    Epsilon = (a < b ? a : b) * 1e-4f;
    if (Epsilon < 1e-4f)
      Epsilon = 1e-4f;
  }
  float d = A - B;
  if (d < 0)
    d = -d;
  return d <= Epsilon;
}

// The kind of a matrix: exactly one value, despite the historic field name.
enum THtMatrixFlag : uint8_t { mfIdentity, mfTranslation, mfScale, mfNegativeScale, mfRotation };

struct THtMatrixData {
  float m11 = 1, m12 = 0, m21 = 0, m22 = 1, dx = 0, dy = 0;
  THtMatrixFlag Flags = mfIdentity;

  static THtMatrixData Identity() noexcept { return {}; }
  static THtMatrixData CreateRotation(float Angle) noexcept;
  static THtMatrixData CreateScaled(float ScaleX, float ScaleY) noexcept;
  static THtMatrixData CreateTranslation(float X, float Y) noexcept;

  void Reset() noexcept { *this = THtMatrixData(); }
  void Init(float A11, float A12, float A21, float A22, float Adx, float Ady) noexcept;
  void UpdateFlags() noexcept;

  void Translate(float X, float Y) noexcept;
  void Scale(float sx, float sy) noexcept;
  void Rotate(float Angle) noexcept;
  void Multiply(const THtMatrixData& M) noexcept;
  // Always true: a singular matrix (|det| < 1e-4) silently becomes identity.
  bool Inverse() noexcept;
  void Adjoint() noexcept;
  float Determinant() const noexcept { return m11 * m22 - m12 * m21; }

  TPointF TransformPoint(TPointF P) const noexcept {
    return {P.X * m11 + P.Y * m21 + dx, P.X * m12 + P.Y * m22 + dy};
  }
  TPoint TransformPoint(TPoint P) const noexcept;
  TRectF TransformRect(const TRectF& R) const noexcept;

  bool IsIdentity() const noexcept { return Flags == mfIdentity; }
  bool HasRotation() const noexcept { return Flags == mfRotation; }
  float XScale() const noexcept;
  float YScale() const noexcept;
  float ScaleFactor() const noexcept;
  bool SameScaleRotate(const THtMatrixData& M) const noexcept;
  float RotationAngle() const noexcept;
  void Decompose(float& ScaleX, float& ScaleY, float& Shear, float& Rotation) const noexcept;

  // Transform text for CSS (UsePX) or SVG, numbers with at most 4 decimals.
  hstring AsString(bool UsePX) const;
  hstring AsStringScaleRotate() const;

  friend bool operator==(const THtMatrixData&, const THtMatrixData&) = default;
};

class THtCustomMatrix : public TObject {
public:
  THtMatrixData Matrix;

  THtCustomMatrix() = default;
  THtCustomMatrix(float m11, float m12, float m21, float m22, float dx, float dy) {
    Matrix.Init(m11, m12, m21, m22, dx, dy);
  }
  explicit THtCustomMatrix(const THtMatrixData& M) : Matrix(M) {}
  static THtCustomMatrix CreateScaled(float ScaleX, float ScaleY) {
    return THtCustomMatrix(THtMatrixData::CreateScaled(ScaleX, ScaleY));
  }
  static THtCustomMatrix CreateRotation(float AAngle) {
    return THtCustomMatrix(THtMatrixData::CreateRotation(AAngle));
  }

  virtual void Reset() { Matrix.Reset(); }
  virtual void Translate(float X, float Y) { Matrix.Translate(X, Y); }
  virtual void Scale(float X, float Y) { Matrix.Scale(X, Y); }
  virtual void Rotate(float Angle) { Matrix.Rotate(Angle); }
  virtual float Determinant() const { return Matrix.Determinant(); }
  virtual bool Inverse() { return Matrix.Inverse(); }
  virtual bool IsIdentity() const { return Matrix.IsIdentity(); }
  virtual THtCustomMatrix* Clone() const { return new THtCustomMatrix(Matrix); }
  virtual TPointF TransformPoint(TPointF P) const { return Matrix.TransformPoint(P); }
  virtual TRectF TransformRect(const TRectF& R) const { return Matrix.TransformRect(R); }
  virtual void Multiply(const THtCustomMatrix& M) { Matrix.Multiply(M.Matrix); }
  virtual void Assign(const THtCustomMatrix& M) { Matrix = M.Matrix; }
  virtual THtMatrixData GetMatrixData() const { return Matrix; }
  virtual void MultiplyData(const THtMatrixData& M) { Matrix.Multiply(M); }
  virtual bool HasRotation() const { return Matrix.HasRotation(); }
  // Unlike the record's form, each part stands alone: " translate(..)" and
  // " scale(..)" both appear for a scaled and moved matrix.
  virtual hstring AsString(bool UsePX) const;
  virtual hstring AsStringScaleRotate() const { return Matrix.AsStringScaleRotate(); }
};

// The current matrix with a stack of saved ones.
class THtCustomMatrixStack : public THtObjectListOf<THtCustomMatrix> {
public:
  THtCustomMatrixStack();
  ~THtCustomMatrixStack() override;

  THtCustomMatrix* CurrentMatrix;

  void Multiply(const THtMatrixData& M) { CurrentMatrix->Matrix.Multiply(M); }
  void SaveState();
  // Asserts a saved state exists.
  void RestoreState();
};

} // namespace ht
