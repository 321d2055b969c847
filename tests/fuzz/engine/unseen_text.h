// Text without its pixels: to draw characters and to scroll them takes more time than all else that a session
// does. The grid of characters, which nearly everything else looks at, is kept all the same.
#pragma once

namespace korvane::fuzz {

// While this is true neither characters nor scrolling change a pixel.
extern bool text_is_unseen;

}  // namespace korvane::fuzz
