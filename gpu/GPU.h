#pragma once

// The whole GPU layer.
#include "gpu/GPUContext.h"
#include "gpu/GPUEngine.h"
#include "gpu/GPUFramebuffer.h"
#include "gpu/GPUImage2D.h"
#include "gpu/GPUImage3D.h"
#include "gpu/GPUPixelBuffer.h"
#include "gpu/GPUProgram.h"
#include "gpu/GPUScript.h"
#include "gpu/GPUScriptSource.h"
#include "gpu/GPUUtils.h"
