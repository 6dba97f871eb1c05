// calc(): an operator-precedence evaluator over the stored tokens, run when a
// measure is asked for pixels, because only then are the percentage base and
// the font size known. Every operand is reduced to pixels at once, so units
// mix freely and the result is in pixels.
#include "htcore/foundation/exception.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/measure.h"

#include <cmath>
#include <vector>

namespace ht {

namespace {

// Operator codes on the operator stack.
constexpr uint16_t kOpen = u'(';
constexpr uint16_t kClose = u')';
constexpr uint16_t kUnaryMinus = 109;

int OperatorCode(const TCSSToken& T) {
  if (T.Name.size() != 1)
    return -1;
  switch (T.Name[0]) {
  case u'+':
  case u'-':
  case u'*':
  case u'/':
  case u'(':
  case u')':
    return T.Name[0];
  default:
    return -1;
  }
}

// Lower binds tighter.
int Binding(uint16_t op) {
  switch (op) {
  case kUnaryMinus:
    return 0;
  case u'*':
  case u'/':
    return 1;
  case kOpen:
    return -1;
  case kClose:
    return 3;
  default:
    return 2;
  }
}

class TCalcStacks {
public:
  std::vector<uint16_t> Ops;
  std::vector<float> Values;

  float PopValue() {
    if (Values.empty())
      throw Exception(std::string_view("Pop from empty val stack"));
    float v = Values.back();
    Values.pop_back();
    return v;
  }
  uint16_t PopOp() {
    if (Ops.empty())
      throw Exception(std::string_view("Pop from empty op stack"));
    uint16_t op = Ops.back();
    Ops.pop_back();
    return op;
  }

  // A binary operator short of two values, or a unary one short of one, is dropped.
  void Apply(uint16_t op) {
    if (op == kUnaryMinus) {
      if (!Values.empty())
        Values.push_back(-PopValue());
      return;
    }
    if (Values.size() < 2)
      return;
    float b = PopValue();
    float a = PopValue();
    switch (op) {
    case u'+':
      Values.push_back(a + b);
      break;
    case u'-':
      Values.push_back(a - b);
      break;
    case u'*':
      Values.push_back(a * b);
      break;
    case u'/':
      Values.push_back(b == 0 ? a : a / b); // by zero: the dividend stays, the divisor is lost
      break;
    default:
      Values.push_back(a);
      break;
    }
  }

  // Reduces what binds no weaker than op; a "(" stops it (and is taken off by ")").
  void Reduce(uint16_t op) {
    const int binding = Binding(op);
    while (!Ops.empty() && Binding(Ops.back()) <= binding) {
      if (op != kClose && Ops.back() == kOpen)
        break;
      uint16_t top = PopOp();
      if (top == kOpen)
        break;
      Apply(top);
    }
  }
};

} // namespace

void TMeasure::DecodeCalc() {
  const PCSSTokens tokens = Calc;
  Calc = nullptr; // operands cannot recurse into this evaluation
  float result = 0;
  if (tokens) {
    TCalcStacks st;
    const size_t n = tokens->size();
    // The walk starts behind the first "calc" and its "(", and ends at the
    // bracket that closes it, so that tokens behind the calc() do not count.
    size_t i = 0;
    while (i < n && !((*tokens)[i].CType == ctFunction && SameText((*tokens)[i].Name.view(), u"calc")))
      ++i;
    i += 2;
    int depth = 1;
    bool unary = true;
    try {
      for (; i < n && depth > 0; ++i) {
        const TCSSToken& t = (*tokens)[i];
        if (t.CType == ctOpenBr) {
          st.Ops.push_back(kOpen);
          ++depth;
          continue;
        }
        // A nested calc( is only a group: its own "(" follows.
        if (t.CType == ctFunction && SameText(t.Name.view(), u"calc"))
          continue;
        const int code = OperatorCode(t);
        if (code < 0) {
          TMeasure operand;
          operand.Init(Style);
          operand.Parent = Parent;
          operand.DecodeToken(t, nullptr);
          st.Values.push_back(operand.GetFPixels());
          unary = false;
          continue;
        }
        const uint16_t op = static_cast<uint16_t>(code);
        if (op == u'-' && unary) { // a prefix reduces nothing on its left
          st.Ops.push_back(kUnaryMinus);
          continue;
        }
        st.Reduce(op);
        if (op == kClose) {
          --depth;
          unary = false;
        } else {
          if (op == kOpen)
            ++depth;
          st.Ops.push_back(op);
          unary = true;
        }
      }
    } catch (const Exception&) {
      // an unbalanced stack keeps what was computed
    }
    if (!st.Values.empty())
      result = st.Values.back();
  }
  if (!std::isfinite(result))
    result = 0;
  FValue = result;
  FMUnit = muPX;
  Flags.Include(mfNotAuto);
  if (result == 0)
    Flags.Include(mfZero);
  else
    Flags.Exclude(mfZero);
}

} // namespace ht
