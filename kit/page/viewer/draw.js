// Meshes and segments on the graphics card.

const MESH = [`#version 300 es
layout(location=0) in vec3 p; uniform mat4 m; uniform vec3 o, s; uniform vec3 shift; out vec3 w;
void main() { w = o + p * s; gl_Position = m * vec4(w, 1) + vec4(shift, 0); }`, `#version 300 es
precision highp float; in vec3 w; out vec4 c; uniform vec4 color; uniform vec3 eye, key, inside; uniform float clip; uniform bool flat_;
void main() {
  vec3 n = cross(dFdx(w), dFdy(w));
  if (w.z > clip) discard;
  if (flat_) { c = color; return; }
  n = normalize(dot(n, eye) < 0. ? -n : n);
  float lit = .40 + .52 * max(0., dot(n, key)) + .10 * max(0., n.z);
  c = gl_FrontFacing ? vec4(color.rgb * lit, color.a) : vec4(inside, color.a);
}`];

// Segments stand in a texture, in 16 bits; the corners that a segment is drawn with are made here.
const PATH = [`#version 300 es
precision highp float; precision highp usampler2D;
uniform usampler2D ends, info; uniform mat4 m; uniform vec4 box; uniform float z, height, done, count, light;
uniform vec2 pixel; uniform vec4 color[6]; uniform float width[6]; uniform int shape, base; uniform bool order; uniform vec3 key;
out vec4 c; out vec2 along; out float wide; flat out int dashed;
vec4 at(vec2 p, float h) { return m * vec4(box.xy + p * box.zw, h, 1); }
void main() {
  if (shape == 4) {                     // the whole box
    int q = gl_VertexID;
    c = vec4(0); along = vec2(0); wide = 9.; dashed = 0;
    gl_Position = at(vec2(q == 1 || q == 2 || q == 4 ? 1 : 0, q == 2 || q > 3 ? 1 : 0), z);
    return;
  }
  int corners = shape == 2 ? 3 : shape == 3 ? 2 : 6;
  int i = gl_VertexID / corners, k = gl_VertexID % corners, n = i + base;
  ivec2 t = ivec2(n % ${WIDE}, n / ${WIDE});
  vec4 e = vec4(texelFetch(ends, t, 0)) / 65535.;
  uvec4 f = texelFetch(info, t, 0);
  int kind = int(f.r);
  c = color[kind]; along = vec2(0); wide = 9.; dashed = kind == 4 ? 1 : 0;
  gl_Position = vec4(2, 2, 2, 1);
  if (c.a == 0. && shape != 2) return;
  if (shape == 2) {                     // a triangle to where the path begins: where an odd number lies, is solid
    if (kind == 0 || kind == 1) gl_Position = at(k == 0 ? vec2(f.gb) / 65535. : k == 1 ? e.xy : e.zw, z);
    return;
  }
  if (order && kind != 4) {
    vec3 hue = clamp(abs(mod(4. * (1. - float(i) / max(1., count - 1.)) + vec3(0, 4, 2), 6.) - 3.) - 1., 0., 1.);
    c.rgb = light + .8 * (1. - abs(2. * light - 1.)) * (hue - .5);
  }
  if (shape == 1) {                     // a wall as high as the layer
    vec2 d = (e.zw - e.xy) * box.zw;
    float f = dot(normalize(vec3(d.y, -d.x, 0) + 1e-9), key);
    c.rgb *= .72 + .34 * (kind == 3 ? abs(f) : f);
    gl_Position = at(k == 1 || k == 2 || k == 4 ? e.zw : e.xy, k == 2 || k > 3 ? z : z - 1.04 * height);   // no cracks
    return;
  }
  if (float(i) >= done) c.a *= .16;
  if (float(i) < done && float(i) + 1. > done) e.zw = mix(e.xy, e.zw, done - float(i));
  vec4 a = at(e.xy, z), b = at(e.zw, z);
  bool end = k == 1 || k == 2 || k == 4;
  vec2 d = (b.xy - a.xy) / pixel;
  float l = length(d);
  d = l > 0. ? d / l : vec2(1, 0);
  gl_Position = end ? b : a;
  along.x = end ? l : 0.;
  if (shape == 0) {
    wide = width[kind] * .5;            // and half a pixel more, over which it fades
    along.y = (k == 2 || k > 3 ? 1. : -1.) * (wide + .5);
    gl_Position.xy += (along.y * vec2(-d.y, d.x) + (end ? d : -d) * wide) * pixel;
  }
}`, `#version 300 es
precision highp float; in vec4 c; in vec2 along; in float wide; flat in int dashed; out vec4 o; uniform bool fill; uniform vec4 solid;
void main() { if (dashed == 1 && mod(along.x, 9.) > 5.) discard; o = fill ? solid : c; o.a *= clamp(wide + .5 - abs(along.y), 0., 1.); }`];

let gl, slow = false, meshProgram, pathProgram, ratio = 1;

function program([vertex, fragment]) {
  const p = gl.createProgram();
  for (const [type, text] of [[gl.VERTEX_SHADER, vertex], [gl.FRAGMENT_SHADER, fragment]]) {
    const shader = gl.createShader(type);
    gl.shaderSource(shader, text);
    gl.compileShader(shader);
    if (!gl.getShaderParameter(shader, gl.COMPILE_STATUS)) throw Error(gl.getShaderInfoLog(shader));
    gl.attachShader(p, shader);
  }
  gl.linkProgram(p);
  if (!gl.getProgramParameter(p, gl.LINK_STATUS)) throw Error(gl.getProgramInfoLog(p));
  const u = {};
  for (let i = gl.getProgramParameter(p, gl.ACTIVE_UNIFORMS); i-- > 0;) {
    const name = gl.getActiveUniform(p, i).name;
    u[name.replace('[0]', '')] = gl.getUniformLocation(p, name);
  }
  return {p, u};
}

// A mesh, with lines between some of its points, on the graphics card.
function upload(mesh) {
  const array = (indexes, buffer) => {
    const vao = gl.createVertexArray();
    gl.bindVertexArray(vao);
    gl.bindBuffer(gl.ARRAY_BUFFER, buffer);
    gl.enableVertexAttribArray(0);
    gl.vertexAttribPointer(0, 3, gl.UNSIGNED_SHORT, true, 8, 0);
    gl.bindBuffer(gl.ELEMENT_ARRAY_BUFFER, gl.createBuffer());
    gl.bufferData(gl.ELEMENT_ARRAY_BUFFER, indexes, gl.STATIC_DRAW);
    gl.bindVertexArray(null);
    return vao;
  };
  const buffer = gl.createBuffer();
  gl.bindBuffer(gl.ARRAY_BUFFER, buffer);
  gl.bufferData(gl.ARRAY_BUFFER, mesh.points, gl.STATIC_DRAW);
  mesh.facetArray = array(mesh.corners, buffer);
  mesh.openArray = array(mesh.open, buffer);
  mesh.sharpArray = array(mesh.sharp, buffer);
  return mesh;
}

// Textures for segments, of a height that grows.
function makeTextures() {
  return {rows: 0, ends: gl.createTexture(), info: gl.createTexture()};
}
function reserve(textures, segments) {
  const rows = max(1, ceil(segments / WIDE));
  if (rows <= textures.rows) return;
  if (rows > gl.getParameter(gl.MAX_TEXTURE_SIZE)) throw Error('a layer has more paths than this browser can draw');
  textures.rows = rows;
  for (const texture of [textures.ends, textures.info]) {
    gl.bindTexture(gl.TEXTURE_2D, texture);
    gl.texImage2D(gl.TEXTURE_2D, 0, gl.RGBA16UI, WIDE, rows, 0, gl.RGBA_INTEGER, gl.UNSIGNED_SHORT, null);
    gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MIN_FILTER, gl.NEAREST);
    gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MAG_FILTER, gl.NEAREST);
  }
}
// Writes segments behind the first `base` ones.
function store(textures, base, segments) {
  const {count} = segments;
  for (let i = 0; i < count;) {
    const x = (base + i) % WIDE, y = floor((base + i) / WIDE);
    const rows = x ? 0 : floor((count - i) / WIDE), w = rows ? WIDE : min(WIDE - x, count - i), h = rows || 1;
    for (const key of ['ends', 'info']) {
      gl.bindTexture(gl.TEXTURE_2D, textures[key]);
      gl.texSubImage2D(gl.TEXTURE_2D, 0, x, y, w, h, gl.RGBA_INTEGER, gl.UNSIGNED_SHORT, segments[key], 4 * i);
    }
    i += w * h;
  }
}
