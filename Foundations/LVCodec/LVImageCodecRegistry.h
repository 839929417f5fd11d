#pragma once
// The process-wide list of image codecs and the three ways of finding one.

#include "Foundations/LVCodec/LVImageCodec.h"

#include <span>
#include <string>
#include <string_view>

namespace Lumivale::Imaging {

// The registered codecs, in lookup order (the default codec is not among them).
std::span<const LVImageCodec* const> ImageCodecRegistry();
// Codec whose extension matches the text after the path's last '.', case-insensitively; null when none.
const LVImageCodec* FindCodecByExtension(std::string_view path);
// First codec (registry order, then signature order) whose signature the file's bytes match; null when none.
const LVImageCodec* FindCodecBySignature(const std::string& path);
// Codec with the format identifier, else the default codec.
const LVImageCodec& FindCodecById(unsigned id);

}  // namespace Lumivale::Imaging
