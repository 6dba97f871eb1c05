// Path records as short text for comparisons: "M2,2 L12,2 C1,1,2,1,3,0 Z".
#pragma once

#include "htcore/graphics/path.h"

#include <string>

inline std::string DumpNum(float v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%g", static_cast<double>(v));
  return buf;
}

inline std::string Dump(const ht::THtCustomPath& p) {
  static const char* const kNames[] = {"M", "L", "C", "A", "S", "Z", "E", "Q", "P"};
  std::string out;
  for (int i = 0; i < p.Count(); ++i) {
    const ht::THtPathRec& r = p.GetRec(i);
    if (!out.empty())
      out += ' ';
    out += kNames[r.Kind];
    if (r.Kind == ht::prMoveTo || r.Kind == ht::prLineTo) {
      out += DumpNum(r.Point.X) + "," + DumpNum(r.Point.Y);
    } else {
      bool first = true;
      for (ht::TPointF q : r.Points) {
        out += (first ? "" : ",") + DumpNum(q.X) + "," + DumpNum(q.Y);
        first = false;
      }
    }
  }
  return out;
}
