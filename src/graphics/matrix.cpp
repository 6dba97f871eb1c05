#include "htcore/graphics/matrix.h"

#include "htcore/foundation/exception.h"
#include "htcore/foundation/fast_string.h"

#include <cmath>
#include <numbers>

namespace ht {

namespace {

constexpr double kDegToRad = std::numbers::pi / 180.0;

void AddNum(TFastString& fs, float v) { fs.Add(static_cast<double>(v), 4, true); }

// "translate(dx,dy)", with "px" units for CSS.
void AddTranslate(TFastString& fs, float dx, float dy, bool UsePX) {
  fs.Add(u"translate(");
  AddNum(fs, dx);
  if (UsePX)
    fs.AddChar(u'p').AddChar(u'x');
  fs.AddChar(u',');
  AddNum(fs, dy);
  if (UsePX)
    fs.AddChar(u'p').AddChar(u'x');
  fs.AddChar(u')');
}

void AddList(TFastString& fs, std::initializer_list<float> values) {
  bool first = true;
  for (float v : values) {
    if (!first)
      fs.AddChar(u',');
    first = false;
    AddNum(fs, v);
  }
}

bool IsZero(float v) { return SameValue(v, 0.0f); }

} // namespace

THtMatrixData THtMatrixData::CreateRotation(float Angle) noexcept {
  double a = Angle * kDegToRad;
  float c = static_cast<float>(std::cos(a)), s = static_cast<float>(std::sin(a));
  THtMatrixData m;
  m.Init(c, s, -s, c, 0, 0);
  return m;
}

THtMatrixData THtMatrixData::CreateScaled(float ScaleX, float ScaleY) noexcept {
  THtMatrixData m;
  m.Init(ScaleX, 0, 0, ScaleY, 0, 0);
  return m;
}

THtMatrixData THtMatrixData::CreateTranslation(float X, float Y) noexcept {
  THtMatrixData m;
  m.Init(1, 0, 0, 1, X, Y);
  return m;
}

void THtMatrixData::Init(float A11, float A12, float A21, float A22, float Adx, float Ady) noexcept {
  m11 = A11;
  m12 = A12;
  m21 = A21;
  m22 = A22;
  dx = Adx;
  dy = Ady;
  UpdateFlags();
}

void THtMatrixData::UpdateFlags() noexcept {
  if (SameValue(m12, 0, 1e-6f) && SameValue(m21, 0, 1e-6f)) {
    if (m11 >= -1e-7f && m22 >= -1e-7f) {
      if (!SameValue(m11, 1) || !SameValue(m22, 1))
        Flags = mfScale;
      else if (dx != 0 || dy != 0)
        Flags = mfTranslation;
      else
        Flags = mfIdentity;
    } else {
      Flags = mfNegativeScale;
    }
  } else {
    Flags = mfRotation;
  }
}

void THtMatrixData::Translate(float X, float Y) noexcept {
  dx += X;
  dy += Y;
  if (Flags == mfIdentity && (X != 0 || Y != 0))
    Flags = mfTranslation;
}

void THtMatrixData::Scale(float sx, float sy) noexcept {
  m11 *= sx;
  m21 *= sx;
  dx *= sx;
  m12 *= sy;
  m22 *= sy;
  dy *= sy;
  UpdateFlags();
}

void THtMatrixData::Rotate(float Angle) noexcept {
  THtMatrixData r = CreateRotation(Angle);
  r.Multiply(*this);
  *this = r;
}

void THtMatrixData::Multiply(const THtMatrixData& M) noexcept {
  if (M.Flags == mfIdentity)
    return;
  float ndx = M.dx * m11 + M.dy * m21 + dx;
  float ndy = M.dx * m12 + M.dy * m22 + dy;
  dx = ndx;
  dy = ndy;
  switch (M.Flags) {
  case mfTranslation:
    if (Flags == mfIdentity)
      Flags = mfTranslation;
    return;
  case mfScale:
  case mfNegativeScale:
    m12 *= M.m11;
    m21 *= M.m22;
    m11 *= M.m11;
    m22 *= M.m22;
    // -1e-8 here, not UpdateFlags' -1e-7: the fast path keeps its own threshold.
    if (Flags < mfScale)
      Flags = m11 >= -1e-8f && m22 >= -1e-8f ? mfScale : mfNegativeScale;
    else
      UpdateFlags();
    return;
  default: {
    float a = m11, b = m12, c = m21, d = m22;
    m11 = M.m11 * a + M.m12 * c;
    m12 = M.m11 * b + M.m12 * d;
    m21 = M.m21 * a + M.m22 * c;
    m22 = M.m21 * b + M.m22 * d;
    UpdateFlags();
  }
  }
}

void THtMatrixData::Adjoint() noexcept {
  float a = m11, b = m12, c = m21, d = m22, e = dx, f = dy;
  m11 = d;
  m12 = -b;
  m21 = -c;
  m22 = a;
  dx = c * f - e * d;
  dy = -(a * f - e * b);
}

bool THtMatrixData::Inverse() noexcept {
  float det = Determinant();
  if (std::fabs(det) >= 0.0001f) {
    Adjoint();
    float k = 1 / det;
    m11 *= k;
    m12 *= k;
    m21 *= k;
    m22 *= k;
    dx *= k;
    dy *= k;
    UpdateFlags();
  } else {
    Reset();
  }
  return true;
}

TPoint THtMatrixData::TransformPoint(TPoint P) const noexcept { return P2P(TransformPoint(P2F(P))); }

TRectF THtMatrixData::TransformRect(const TRectF& R) const noexcept {
  switch (Flags) {
  case mfIdentity:
    return R;
  case mfTranslation:
    return {R.Left + dx, R.Top + dy, R.Right + dx, R.Bottom + dy};
  case mfScale:
    return {R.Left * m11 + dx, R.Top * m22 + dy, R.Right * m11 + dx, R.Bottom * m22 + dy};
  default: {
    TPointF a = TransformPoint(TPointF{R.Left, R.Top});
    TPointF b = TransformPoint(TPointF{R.Right, R.Bottom});
    TRectF res{a.X, a.Y, b.X, b.Y};
    if (res.Left > res.Right)
      ExchangeSingle(res.Left, res.Right);
    if (res.Top > res.Bottom)
      ExchangeSingle(res.Top, res.Bottom);
    if (m12 != 0 || m21 != 0) {
      for (TPointF c : {TransformPoint(TPointF{R.Right, R.Top}), TransformPoint(TPointF{R.Left, R.Bottom})}) {
        res.Left = std::fmin(res.Left, c.X);
        res.Right = std::fmax(res.Right, c.X);
        res.Top = std::fmin(res.Top, c.Y);
        res.Bottom = std::fmax(res.Bottom, c.Y);
      }
    }
    return res;
  }
  }
}

float THtMatrixData::XScale() const noexcept { return std::fabs(m11) + std::fabs(m12); }
float THtMatrixData::YScale() const noexcept { return std::fabs(m21) + std::fabs(m22); }
float THtMatrixData::ScaleFactor() const noexcept { return static_cast<float>(std::hypot(m11, m12)); }

bool THtMatrixData::SameScaleRotate(const THtMatrixData& M) const noexcept {
  return SameValue(m11, M.m11, 1e-6f) && SameValue(m12, M.m12, 1e-6f) && SameValue(m21, M.m21, 1e-6f) &&
         SameValue(m22, M.m22, 1e-6f);
}

float THtMatrixData::RotationAngle() const noexcept {
  double s = std::hypot(m11, m12);
  double a = m11, b = m12;
  if (s != 0) {
    a /= s;
    b /= s;
  }
  double deg = std::atan2(b, a) / kDegToRad;
  if (deg < 0)
    deg += 360;
  return static_cast<float>(deg);
}

void THtMatrixData::Decompose(float& ScaleX, float& ScaleY, float& Shear, float& Rotation) const noexcept {
  double a = m11, b = m12, c = m21, d = m22;
  double sx = std::sqrt(a * a + b * b);
  if (sx != 0) {
    a /= sx;
    b /= sx;
  }
  double shear = a * c + b * d;
  double sy = std::sqrt((c - a * shear) * (c - a * shear) + (d - b * shear) * (d - b * shear));
  if ((a * d - b * c) * sx * sy < 0)
    sy = -sy;
  double rot = std::atan2(b, a) / kDegToRad;
  if (rot < 0)
    rot += 360;
  ScaleX = static_cast<float>(sx);
  ScaleY = static_cast<float>(sy);
  Shear = static_cast<float>(shear);
  Rotation = static_cast<float>(rot);
}

hstring THtMatrixData::AsString(bool UsePX) const {
  TFastString fs(256);
  bool moved = !IsZero(dx) || !IsZero(dy);
  if (Flags == mfRotation || ((Flags == mfScale || Flags == mfNegativeScale) && moved)) {
    fs.Add(u"matrix(");
    AddList(fs, {m11, m12, m21, m22, dx, dy});
    fs.AddChar(u')');
    return fs.GetAsString();
  }
  if (moved) {
    AddTranslate(fs, dx, dy, UsePX);
  }
  if (Flags == mfScale || Flags == mfNegativeScale) {
    fs.Add(u" scale(");
    AddList(fs, {m11, m22});
    fs.AddChar(u')');
  }
  return fs.GetAsString();
}

hstring THtMatrixData::AsStringScaleRotate() const {
  TFastString fs(128);
  if (HasRotation()) {
    fs.Add(u"matrix(");
    AddList(fs, {m11, m12, m21, m22});
    fs.Add(u",0,0)");
  } else if (m11 != 1 || m22 != 1) {
    fs.Add(u" scale(");
    AddList(fs, {m11, m22});
    fs.AddChar(u')');
  }
  return fs.GetAsString();
}

hstring THtCustomMatrix::AsString(bool UsePX) const {
  const THtMatrixData& m = Matrix;
  TFastString fs(256);
  if (HasRotation()) {
    fs.Add(u"matrix(");
    AddList(fs, {m.m11, m.m12, m.m21, m.m22, m.dx, m.dy});
    fs.AddChar(u')');
    return fs.GetAsString();
  }
  if (m.dx != 0 || m.dy != 0) {
    fs.AddChar(u' ');
    AddTranslate(fs, m.dx, m.dy, UsePX);
  }
  if (m.m11 != 1 || m.m22 != 1) {
    fs.Add(u" scale(");
    AddList(fs, {m.m11, m.m22});
    fs.AddChar(u')');
  }
  return fs.GetAsString();
}

THtCustomMatrixStack::THtCustomMatrixStack()
    : THtObjectListOf<THtCustomMatrix>(true), CurrentMatrix(new THtCustomMatrix) {}

THtCustomMatrixStack::~THtCustomMatrixStack() { delete CurrentMatrix; }

void THtCustomMatrixStack::SaveState() {
  Add(CurrentMatrix);
  CurrentMatrix = new THtCustomMatrix(CurrentMatrix->Matrix);
}

void THtCustomMatrixStack::RestoreState() {
  HT_ASSERT(Count() > 0);
  delete CurrentMatrix;
  CurrentMatrix = ExtractAt(Count() - 1);
}

} // namespace ht
