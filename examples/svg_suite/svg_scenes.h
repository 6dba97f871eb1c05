// The drawing suite: small scenes that show what a canvas can draw (shapes,
// paths, gradients, clips, transforms, text, images, widgets, pages). Each
// scene draws through the abstract THtCanvas, so the same code paints on the
// SVG canvas, on a host's raster canvas, or on a peer library in a benchmark.
//
//   for (const htcore_svg::TSvgScene& s : htcore_svg::Scenes())
//     for (int page = 0; page < s.Pages; ++page)
//       save(s.Name, page, htcore_svg::RenderScene(s)[page]);
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/graphics/canvas.h"

#include <span>
#include <vector>

namespace htcore_svg {

struct TSvgScene {
  const char* Name;  // file name stem
  const char* Title; // one line on what it shows
  int Width, Height; // pixels at 96 per inch
  int Pages;         // documents the scene makes, one a page
  float Scale;       // the scene's own scale (THtCanvasScene.Scale)
  // Draws page Page (0-based) of the scene.
  void (*Draw)(ht::THtCanvas& Canvas, int Page);
};

std::span<const TSvgScene> Scenes();

// One page of the scene in a scene of its own on any canvas: BeginScene
// (with the scene's scale), the drawing, EndScene.
void DrawPage(const TSvgScene& Scene, ht::THtCanvas& Canvas, int Page);

// One SVG document per page, each with a style element for its text classes.
std::vector<ht::hstring> RenderScene(const TSvgScene& Scene);

// The bytes of the small PNG the image scenes draw.
std::span<const uint8_t> SamplePNG();

} // namespace htcore_svg
