#include "filters/FilterShaders.h"

// Raw literals keep the texts exactly as the GPU receives them, trailing
// blanks included.
namespace orvan::filter_shaders {

const char kVertexShader[] = R"(attribute vec4 a_position;
attribute vec2 a_texcoord;
varying vec2 v_texcoord;
void main() {
  gl_Position = a_position;
  v_texcoord = a_texcoord;
}
)";

const char kFragmentHeader2D[] = R"(precision mediump float;
uniform sampler2D tex_sampler;
varying vec2 v_texcoord;
)";

const char kFragmentHeaderOES[] = R"(#extension GL_OES_EGL_image_external : require
precision mediump float;
uniform samplerExternalOES tex_sampler;
varying vec2 v_texcoord;
)";

const char kBaseFragment[] = R"(void main() {
    gl_FragColor = texture2D(tex_sampler,v_texcoord);
}
)";

const char kTableFragment[] = R"(uniform sampler2D tex_frame;
uniform float mStrength; 
void main() {
    vec4 color = texture2D(tex_sampler, v_texcoord);
    float dstep = 64.0; 
    float d1 = dstep - 1.0; 
    float total = dstep * dstep - 1.0; 
    float scale = d1 * 255.0 / 256.0; 
    float th0 = 1.0; 
    float g = color.g * scale; 
    float g0 = floor(g); 
    float g1 = g0 + 1.0; 
    float dg = g - g0; 
    float b = color.b * scale;
    b = b + g0 / 5.0 ; 
    if(b < th0) b = th0;
    if(b > d1 - th0) b = d1 - th0; 
    float off0 =  (b + g0 * dstep) / total; 
    float off1 =  (b + g1 * dstep) / total; 
    vec2 p0 = vec2(off0, color.r);
    vec2 p1 = vec2(off1, color.r);
    vec4 dcolor0 = texture2D(tex_frame, p0);
    vec4 dcolor1 = texture2D(tex_frame, p1);
    vec4 colordst = dcolor0 * (1.0 - dg) + dcolor1 * dg; 
    colordst = color * (1.0 - mStrength) + colordst * mStrength; 
    gl_FragColor = vec4(colordst.rgb, 1.0);
}
)";

const char kDistortedFragment[] = R"(uniform float mRadius; 
uniform float mStrength; 
uniform float mCenterx; 
uniform float mCentery; 
void main() {
    vec2 v_texcoord2 = v_texcoord; 
     float dx = v_texcoord.x - mCenterx; 
    float dy = v_texcoord.y - mCentery; 
    float dist = sqrt(dx * dx + dy * dy); 
    if(dist < mRadius) { 
        float angle = (mRadius - dist) / mRadius; 
        angle = mStrength * angle * angle; 
        float fsin = sin(angle); 
        float fcos = cos(angle); 
        v_texcoord2 = vec2(dx * fcos + dy * fsin + mCenterx, -dx * fsin + dy * fcos + mCentery); } 
     gl_FragColor = texture2D(tex_sampler,v_texcoord2); 
}
)";

const char kExtrusionFragment[] = R"(uniform float mStrength; 
uniform float mZoom; 
uniform float mCenterx; 
uniform float mCentery; 
void main() {
    float dx = v_texcoord.x - mCenterx; 
    float dy = v_texcoord.y - mCenterx; 
    float dist = dx * dx + dy * dy; 
    float factor = pow(dist, mStrength) * mZoom; 
    vec2 v_texcoord2 = vec2(dx * factor + mCenterx, dy * factor + mCenterx); 
     gl_FragColor = texture2D(tex_sampler,v_texcoord2); 
}
)";

const char kMirrorFragment[] = R"(uniform float mCenterx; 
uniform float mCentery; 
void main() {
    vec2 v_texcoord2 = v_texcoord; 
    if(v_texcoord2.x > mCenterx) { 
        v_texcoord2.x = 2.0 * mCenterx - v_texcoord2.x;} 
    if(v_texcoord2.y > mCentery) { 
        v_texcoord2.y = 2.0 * mCentery - v_texcoord2.y; } 
    gl_FragColor = texture2D(tex_sampler,v_texcoord2);
}
)";

const char kTemperatureFragment[] = R"(void main() {
    vec4 color = texture2D(tex_sampler,v_texcoord);
    float y = color.r * 0.299 + color.g * 0.587 + color.b * 0.114; 
     float f = 16.0 * (y - 0.5) * (y - 0.5); 
    if(y > 0.75 ) { 
        f = -16.0 * (y - 0.75) * (y - 0.75) + 1.0; 
        gl_FragColor = vec4(1.0, f, 0.0, 1.0); } 
    else if(y > 0.5 ) { 
        gl_FragColor = vec4(f, 1.0, 0.0, 1.0); } 
    else if(y > 0.25) {         gl_FragColor = vec4(0.0 , 1.0, f, 1.0); } 
    else {         f = -16.0 * (y - 0.25) * (y - 0.25) + 1.0; 
        gl_FragColor = vec4(0.0, f, 1.0, 1.0); } 
}
)";

const char kTimetunnelFragment[] = R"(uniform float mRadius; 
void main() {
    vec2 v_texcoord2 = v_texcoord; 
    float dx = v_texcoord.x - 0.5; 
    float dy = v_texcoord.y - 0.5; 
    float dist = dx * dx + dy * dy; 
    if(dist > mRadius) { 
        float factor = sqrt(mRadius / dist); 
        v_texcoord2.x = factor * dx + 0.5; 
        v_texcoord2.y = factor * dy + 0.5; 
    }; 
    gl_FragColor = texture2D(tex_sampler,v_texcoord2);
}
)";

const char kXrayFragment[] = R"(void main() {
    vec4 color = texture2D(tex_sampler,v_texcoord);
    float gray = 1.0 - (color.r + color.g + color.b) / 3.0;
     gl_FragColor = vec4 (gray,gray, gray, 1.0);
}
)";

}  // namespace orvan::filter_shaders
