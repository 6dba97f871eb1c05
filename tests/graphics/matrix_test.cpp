#include "htcore/foundation/exception.h"
#include "htcore/graphics/matrix.h"

#include <gtest/gtest.h>

using namespace ht;

namespace {

THtMatrixData Make(float a, float b, float c, float d, float e, float f) {
  THtMatrixData m;
  m.Init(a, b, c, d, e, f);
  return m;
}

void ExpectNear(const THtMatrixData& m, std::initializer_list<float> want) {
  const float got[] = {m.m11, m.m12, m.m21, m.m22, m.dx, m.dy};
  int i = 0;
  for (float w : want)
    EXPECT_NEAR(got[i++], w, 1e-4) << "entry " << i - 1;
}

} // namespace

TEST(Matrix, KindFollowsTheEntries) {
  struct {
    THtMatrixData m;
    THtMatrixFlag kind;
  } cases[] = {
      {Make(1, 0, 0, 1, 0, 0), mfIdentity},
      {Make(1, 0, 0, 1, 3, 0), mfTranslation},
      {Make(2, 0, 0, 1, 0, 0), mfScale},
      {Make(2, 0, 0, 2, 5, 5), mfScale}, // a scale may carry a translation
      {Make(-1, 0, 0, 1, 0, 0), mfNegativeScale},
      {Make(-5e-8f, 0, 0, 1, 0, 0), mfScale},   // above -1e-7 counts as positive
      {Make(1, 2e-7f, 0, 1, 0, 0), mfIdentity}, // within 1e-6 of 0: no rotation
      {Make(1, 2e-6f, 0, 1, 0, 0), mfRotation},
      {Make(0, 1, -1, 0, 0, 0), mfRotation},
  };
  for (auto& c : cases)
    EXPECT_EQ(c.m.Flags, c.kind) << c.m.m11 << " " << c.m.m12;
}

TEST(Matrix, OperationsApplyAfterTheExistingTransform) {
  THtMatrixData m;
  m.Scale(2, 3);
  m.Translate(10, 20); // after the scale: not scaled
  EXPECT_EQ(m.TransformPoint(TPointF{1, 1}), (TPointF{12, 23}));
  m.Scale(2, 2); // scales the translation too
  EXPECT_EQ(m.TransformPoint(TPointF{1, 1}), (TPointF{24, 46}));

  THtMatrixData r;
  r.Translate(10, 0);
  r.Rotate(90); // the translated point turns about the origin
  TPointF p = r.TransformPoint(TPointF{0, 0});
  EXPECT_NEAR(p.X, 0, 1e-5);
  EXPECT_NEAR(p.Y, 10, 1e-5);
  EXPECT_EQ(r.Flags, mfRotation);
  EXPECT_NEAR(r.RotationAngle(), 90, 1e-4);

  THtMatrixData t;
  t.Translate(0, 0);
  EXPECT_EQ(t.Flags, mfIdentity);
}

TEST(Matrix, MultiplyAppliesTheArgumentFirst) {
  // Every fast path must agree with the general product.
  const THtMatrixData args[] = {Make(1, 0, 0, 1, 0, 0), Make(1, 0, 0, 1, 4, -2), Make(2, 0, 0, 3, 1, 1),
                                Make(-2, 0, 0, 1, 0, 5), Make(0.6f, 0.8f, -0.8f, 0.6f, 3, 4)};
  const THtMatrixData selves[] = {Make(1, 0, 0, 1, 0, 0), Make(1, 0, 0, 1, 7, 1), Make(0.5f, 0, 0, 4, 0, 0),
                                  Make(0, 1, -1, 0, 2, 2)};
  for (const THtMatrixData& self : selves)
    for (const THtMatrixData& M : args) {
      THtMatrixData prod = self;
      prod.Multiply(M);
      for (TPointF p : {TPointF{0, 0}, TPointF{1, 2}, TPointF{-3, 5}}) {
        TPointF want = self.TransformPoint(M.TransformPoint(p));
        TPointF got = prod.TransformPoint(p);
        EXPECT_NEAR(got.X, want.X, 1e-4);
        EXPECT_NEAR(got.Y, want.Y, 1e-4);
      }
      THtMatrixData check = prod;
      check.UpdateFlags();
      EXPECT_EQ(prod.Flags, check.Flags);
    }
}

TEST(Matrix, InverseAndSingular) {
  THtMatrixData m = Make(2, 1, -1, 3, 5, -7);
  THtMatrixData inv = m;
  EXPECT_TRUE(inv.Inverse());
  THtMatrixData id = m;
  id.Multiply(inv);
  ExpectNear(id, {1, 0, 0, 1, 0, 0});

  THtMatrixData s = Make(1, 2, 2, 4, 3, 3); // det 0
  EXPECT_TRUE(s.Inverse());                 // callers are not told
  EXPECT_EQ(s, THtMatrixData());
}

TEST(Matrix, TransformRectByKind) {
  TRectF r{1, 2, 3, 5};
  EXPECT_EQ(Make(1, 0, 0, 1, 0, 0).TransformRect(r), r);
  EXPECT_EQ(Make(1, 0, 0, 1, 10, 20).TransformRect(r), (TRectF{11, 22, 13, 25}));
  EXPECT_EQ(Make(2, 0, 0, 3, 1, 0).TransformRect(r), (TRectF{3, 6, 7, 15}));
  EXPECT_EQ(Make(-1, 0, 0, 1, 0, 0).TransformRect(r), (TRectF{-3, 2, -1, 5})); // swapped back
  TRectF rot = THtMatrixData::CreateRotation(45).TransformRect(TRectF{-1, -1, 1, 1});
  EXPECT_NEAR(rot.Left, -1.41421f, 1e-4);
  EXPECT_NEAR(rot.Bottom, 1.41421f, 1e-4); // widened to the other corners
}

TEST(Matrix, ScalesAndDecompose) {
  THtMatrixData m = THtMatrixData::CreateScaled(2, 3);
  m.Rotate(30);
  float sx, sy, shear, rot;
  m.Decompose(sx, sy, shear, rot);
  EXPECT_NEAR(sx, 2, 1e-4);
  EXPECT_NEAR(sy, 3, 1e-4);
  EXPECT_NEAR(shear, 0, 1e-4);
  EXPECT_NEAR(rot, 30, 1e-3);
  EXPECT_NEAR(m.ScaleFactor(), 2, 1e-4);
  THtMatrixData mirror = Make(1, 0, 0, -1, 0, 0);
  mirror.Decompose(sx, sy, shear, rot);
  EXPECT_NEAR(sy, -1, 1e-6);
  EXPECT_FLOAT_EQ(Make(1, -2, 3, 4, 0, 0).XScale(), 3);
  EXPECT_FLOAT_EQ(Make(1, -2, 3, 4, 0, 0).YScale(), 7);
  EXPECT_TRUE(Make(1, 0, 0, 1, 0, 0).SameScaleRotate(Make(1, 0, 0, 1, 9, 9)));
}

TEST(Matrix, TransformText) {
  struct {
    THtMatrixData m;
    const char* px;
    const char* plain;
  } cases[] = {
      {Make(1, 0, 0, 1, 0, 0), "", ""},
      {Make(1, 0, 0, 1, 10, 2.5f), "translate(10px,2.5px)", "translate(10,2.5)"},
      {Make(2, 0, 0, 0.5f, 0, 0), " scale(2,0.5)", " scale(2,0.5)"},
      {Make(2, 0, 0, 2, 3, 0), "matrix(2,0,0,2,3,0)", "matrix(2,0,0,2,3,0)"},
      {Make(0, 1, -1, 0, 0, 0.123456f), "matrix(0,1,-1,0,0,0.1235)", "matrix(0,1,-1,0,0,0.1235)"},
  };
  for (auto& c : cases) {
    EXPECT_EQ(c.m.AsString(true).toUtf8(), c.px);
    EXPECT_EQ(c.m.AsString(false).toUtf8(), c.plain);
  }
  EXPECT_EQ(Make(0, 1, -1, 0, 5, 5).AsStringScaleRotate().toUtf8(), "matrix(0,1,-1,0,0,0)");
  EXPECT_EQ(Make(2, 0, 0, 2, 5, 5).AsStringScaleRotate().toUtf8(), " scale(2,2)");
  EXPECT_EQ(Make(1, 0, 0, 1, 5, 5).AsStringScaleRotate().toUtf8(), "");
  // The object form writes translation and scale side by side.
  EXPECT_EQ(THtCustomMatrix(2, 0, 0, 2, 3, 4).AsString(true).toUtf8(), " translate(3px,4px) scale(2,2)");
}

TEST(MatrixStack, SaveRestore) {
  THtCustomMatrixStack st;
  st.Multiply(THtMatrixData::CreateTranslation(5, 0));
  st.SaveState();
  st.Multiply(THtMatrixData::CreateScaled(2, 2));
  EXPECT_EQ(st.CurrentMatrix->Matrix.TransformPoint(TPointF{1, 1}), (TPointF{7, 2}));
  st.RestoreState();
  EXPECT_EQ(st.CurrentMatrix->Matrix.TransformPoint(TPointF{1, 1}), (TPointF{6, 1}));
  EXPECT_THROW(st.RestoreState(), EAssertionFailed);
}
