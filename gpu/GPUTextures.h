#pragma once

// Texture setup shared by the 2D and 3D images.
namespace orvan::gpu_internal {

// A new texture name (0 when GL gives none).
unsigned generateTexture();
void deleteTexture(unsigned texture);
// Linear filtering and edge clamping on the two plane axes, and on the third
// for volumes; the texture must be bound to target.
void setDefaultParameters(unsigned target, bool volume);
void bindTexture(unsigned target, unsigned texture);

// Binds, fills the storage through fill(), sets the default parameters and
// unbinds; nothing when there is no texture.
template <typename Fill>
void specifyTexture(unsigned target, unsigned texture, bool volume, Fill fill) {
  if (texture == 0) return;
  bindTexture(target, texture);
  fill();
  setDefaultParameters(target, volume);
  bindTexture(target, 0);
}

// A freshly made image, or null (and deleted) when it got no texture.
template <typename GPUImage>
GPUImage* keepIfTextured(GPUImage* image) {
  if (image != nullptr && image->getTexture() == 0) {
    delete image;
    return nullptr;
  }
  return image;
}

}  // namespace orvan::gpu_internal
