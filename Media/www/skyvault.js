// Shows an equirectangular picture from inside the sphere.
//
// The middle between the picture's left and right edges is the front, columns grow to the right, the upper
// edge is the zenith. (An antialiased export lies within a quarter of a pixel of that.) The address can say
// where to look first: #heading=30&pitch=-10&fov=60, in degrees, with the signs of the program's own camera:
// heading to the right, pitch downwards; fov is the angle across the longer side of the window.
//
// Two painters draw the view. The one on WebGL looks up every pixel's direction in the picture. But a page
// opened from a folder (file:) may not hand its picture to WebGL; then the other one draws small pieces of
// the picture on a plain canvas, each where it lies, which is allowed everywhere.
"use strict";
(() => {

const radian = Math.PI / 180;
const limits = { pitch: 90 * radian, narrow: 10 * radian, wide: 130 * radian };
const firstFov = 80 * radian;
const turnPerSecond = 3 * radian;
const keyStep = 5 * radian;
const keyZoom = 1.15;

const view = document.getElementById("view");
const message = document.getElementById("message");
const place = document.getElementById("place");
const fullScreenButton = document.getElementById("full-screen");

const clamp = (value, low, high) => Math.min(Math.max(value, low), high);

// ---- the picture's address --------------------------------------------------------------------------------

function encoded(name) {
    try {
        return encodeURIComponent(name);
    } catch (error) {
        return "";  // half of a character
    }
}

function decoded(text) {
    try {
        return decodeURIComponent(text);
    } catch (error) {
        return text;
    }
}

// Where the picture may be, the likeliest first. The name written into the page comes first if it is plain;
// other characters may have been lost on their way into the page. The page is named like the picture, apart
// from the extension, so the page's own address knows the name too.
function pictureAddresses() {
    const name = document.getElementById("picture").textContent;
    const written = encoded(name);
    const page = location.pathname.slice(location.pathname.lastIndexOf("/") + 1);
    const extension = encoded(name.slice(name.lastIndexOf(".")));
    const alike = /\.html$/i.test(page) ? page.slice(0, -5) + extension : "";
    const plain = /^[ -~]*$/.test(name) && !name.includes("?");
    const addresses = plain ? [written, alike] : [alike, written];
    return addresses.filter((address, i) => address && addresses.indexOf(address) === i);
}

function loadPicture(addresses) {
    return new Promise((resolve, reject) => {
        const next = (i) => {
            if (i === addresses.length) return reject(new Error("no picture"));
            const image = new Image();
            image.decoding = "async";
            image.onload = () => {
                image.onload = image.onerror = null;
                resolve({ image, name: decoded(addresses[i]) });
            };
            image.onerror = () => next(i + 1);
            image.src = addresses[i];
        };
        next(0);
    });
}

// ---- the camera -------------------------------------------------------------------------------------------

// Angles in radians; pitch is positive upwards in here.
const start = { heading: 0, pitch: 0, fov: firstFov };
const camera = {};

function keepWithinLimits(c) {
    c.heading -= 2 * Math.PI * Math.round(c.heading / (2 * Math.PI));
    c.pitch = clamp(c.pitch, -limits.pitch, limits.pitch);
    c.fov = clamp(c.fov, limits.narrow, limits.wide);
}

// Takes the start view from the address, else from what the photo said when the page was made; false when there
// is none.
function readStart() {
    const said = new URLSearchParams(location.hash.length > 1 ? location.hash.slice(1) : view.dataset.start);
    const number = (key) => {
        const text = said.get(key);
        return text !== null && text.trim() !== "" && isFinite(text) ? Number(text) * radian : null;
    };
    const [heading, pitch, fov] = ["heading", "pitch", "fov"].map(number);
    Object.assign(start, { heading: heading ?? 0, pitch: -(pitch ?? 0), fov: fov ?? firstFov });
    keepWithinLimits(start);
    Object.assign(camera, start);
    return heading !== null || pitch !== null || fov !== null;
}

// Distance of the picture plane, in the unit of the two sides.
function focalDepth(width, height) {
    return Math.max(width, height) / 2 / Math.tan(camera.fov / 2);
}

// The camera's right, up and front as unit vectors: +X right, +Y up, +Z the picture's front.
function cameraAxes() {
    const ch = Math.cos(camera.heading), sh = Math.sin(camera.heading);
    const cp = Math.cos(camera.pitch), sp = Math.sin(camera.pitch);
    return { right: [ch, 0, -sh], up: [-sp * sh, cp, -sp * ch], front: [cp * sh, sp, cp * ch] };
}

// ---- painting with WebGL ----------------------------------------------------------------------------------

const vertexShader = `#version 300 es
void main() {
    // One triangle that covers everything.
    gl_Position = vec4(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0, 0.0, 1.0);
}`;

// The picture wraps around behind the viewer: the step from its last to its first column is a short one.
const fragmentShader = `#version 300 es
precision highp float;
uniform sampler2D picture;
uniform vec2 middle;
uniform float depth;
uniform mat3 axes;
out vec4 colour;
void main() {
    vec3 d = axes * vec3(gl_FragCoord.xy - middle, depth);
    vec2 at = vec2(atan(d.x, d.z) / 6.283185307 + 0.5, 0.5 - atan(d.y, length(d.xz)) / 3.141592654);
    vec2 dx = dFdx(at), dy = dFdy(at);
    dx.x -= floor(dx.x + 0.5);
    dy.x -= floor(dy.x + 0.5);
    colour = vec4(textureGrad(picture, at, dx, dy).rgb, 1.0);
}`;

// The picture no wider than `width`, as something that can be drawn.
function scaledTo(image, width) {
    if (image.naturalWidth <= width) return image;
    const canvas = document.createElement("canvas");
    canvas.width = width;
    canvas.height = Math.max(1, Math.round(image.naturalHeight * width / image.naturalWidth));
    const context = canvas.getContext("2d");
    if (!context) return null;
    context.imageSmoothingQuality = "high";
    context.drawImage(image, 0, 0, canvas.width, canvas.height);
    return canvas;
}

// True when the picture, scaled down as far as the graphics card asks for, has become the current texture.
function uploadPicture(gl, image) {
    const largest = gl.getParameter(gl.MAX_TEXTURE_SIZE);
    const fits = Math.min(image.naturalWidth, largest,
                          Math.floor(largest * image.naturalWidth / image.naturalHeight));
    gl.pixelStorei(gl.UNPACK_PREMULTIPLY_ALPHA_WEBGL, true);
    // Cards refuse large textures they have no memory for, too: then half the size may do.
    for (let width = fits; width >= 512; width = Math.floor(width / 2)) {
        const source = scaledTo(image, width);
        if (!source) continue;
        while (gl.getError() !== gl.NO_ERROR && !gl.isContextLost());
        gl.texImage2D(gl.TEXTURE_2D, 0, gl.RGBA8, gl.RGBA, gl.UNSIGNED_BYTE, source);
        gl.generateMipmap(gl.TEXTURE_2D);
        if (gl.getError() === gl.NO_ERROR) return true;
        if (image.naturalWidth <= 512) break;
    }
    return false;
}

// A painter, or null when WebGL is missing or may not have the picture.
function webglPainter(image, whenLost) {
    const canvas = document.createElement("canvas");
    const gl = canvas.getContext("webgl2", { alpha: false, antialias: false, depth: false });
    if (!gl) return null;
    const program = gl.createProgram();
    for (const [kind, source] of [[gl.VERTEX_SHADER, vertexShader], [gl.FRAGMENT_SHADER, fragmentShader]]) {
        const shader = gl.createShader(kind);
        gl.shaderSource(shader, source);
        gl.compileShader(shader);
        gl.attachShader(program, shader);
    }
    gl.linkProgram(program);
    if (!gl.getProgramParameter(program, gl.LINK_STATUS)) return null;
    gl.useProgram(program);
    gl.bindTexture(gl.TEXTURE_2D, gl.createTexture());
    try {
        if (!uploadPicture(gl, image)) return null;
    } catch (error) {
        return null;  // SecurityError: the page was opened from a folder
    }
    gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_WRAP_S, gl.REPEAT);
    gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_WRAP_T, gl.CLAMP_TO_EDGE);
    gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MIN_FILTER, gl.LINEAR_MIPMAP_LINEAR);
    // Towards the poles a pixel of the view is a wide, low piece of the picture.
    const anisotropic = gl.getExtension("EXT_texture_filter_anisotropic");
    if (anisotropic) {
        const most = gl.getParameter(anisotropic.MAX_TEXTURE_MAX_ANISOTROPY_EXT);
        gl.texParameteri(gl.TEXTURE_2D, anisotropic.TEXTURE_MAX_ANISOTROPY_EXT, Math.min(16, most));
    }
    const uniform = (name) => gl.getUniformLocation(program, name);
    const middle = uniform("middle"), depth = uniform("depth"), axes = uniform("axes");
    canvas.addEventListener("webglcontextlost", (event) => {
        event.preventDefault();
        whenLost();
    });
    return {
        kind: "webgl",
        canvas,
        paint() {
            const { width, height } = canvas;
            gl.viewport(0, 0, width, height);
            gl.uniform2f(middle, width / 2, height / 2);
            gl.uniform1f(depth, focalDepth(width, height));
            const { right, up, front } = cameraAxes();
            gl.uniformMatrix3fv(axes, false, [...right, ...up, ...front]);
            gl.drawArrays(gl.TRIANGLES, 0, 3);
            return true;
        },
    };
}

// ---- painting on a plain canvas ---------------------------------------------------------------------------

// The picture is kept as 8 x 4 blocks of 45 degrees, each with a margin of its neighbours' pixels, in a few
// sizes, so that the view is never much coarser than the blocks. Every view draws the blocks in cells of a
// few degrees, as parallelograms; a cell reaches a little over its edges, so that no seam shows.
const blockAngle = 45 * radian;
const margin = 8;
const widestBlocks = 8192;
const reach = 1.1;  // pixels of the view

function makeBlocks(image, width) {
    const scale = image.naturalWidth / width;
    const scaleY = image.naturalHeight / (width / 2);
    const size = width / 8;
    const blocks = [];
    for (let row = 0; row < 4; ++row) {
        for (let column = 0; column < 8; ++column) {
            const canvas = document.createElement("canvas");
            canvas.width = canvas.height = size + 2 * margin;
            const context = canvas.getContext("2d", { alpha: false });
            if (!context) return null;
            context.imageSmoothingQuality = "high";
            // Beyond the picture's ends is its other end. Above and below is nothing but the last row again.
            const left = margin - column * size, top = margin - row * size;
            const draw = (dx) => {
                const from = Math.max(0, -left - dx), to = Math.min(width, canvas.width - left - dx);
                const upper = Math.max(0, -top), lower = Math.min(width / 2, canvas.height - top);
                if (from >= to) return;
                const piece = [from * scale, (to - from) * scale];
                context.drawImage(image, piece[0], upper * scaleY, piece[1], (lower - upper) * scaleY,
                                  left + dx + from, top + upper, to - from, lower - upper);
                const line = Math.min(scaleY, image.naturalHeight);
                if (row === 0) {
                    context.drawImage(image, piece[0], 0, piece[1], line, left + dx + from, 0, to - from, margin);
                }
                if (row === 3) {
                    context.drawImage(image, piece[0], image.naturalHeight - line, piece[1], line,
                                      left + dx + from, margin + size, to - from, margin);
                }
            };
            [0, -width, width].forEach(draw);
            blocks.push(canvas);
        }
    }
    return { width, size, blocks };
}

function canvasPainter(image) {
    const canvas = document.createElement("canvas");
    const context = canvas.getContext("2d", { alpha: false });
    if (!context) return null;
    const widest = clamp(2 ** Math.round(Math.log2(image.naturalWidth)), 512, widestBlocks);
    const sizes = new Map();
    const blocksFor = (depth) => {
        // At least as many pixels to the degree as the middle of the view has.
        let width = widest;
        while (width >= 1024 && width / 2 >= 2 * Math.PI * depth) width /= 2;
        if (!sizes.has(width)) sizes.set(width, makeBlocks(image, width));
        return sizes.get(width);
    };

    let axes, depth, halfWidth, halfHeight;
    // Where a direction meets the view, in pixels; false when it is beside or behind the viewer.
    const project = (longitude, latitude, point) => {
        const c = Math.cos(latitude);
        const x = c * Math.sin(longitude), y = Math.sin(latitude), z = c * Math.cos(longitude);
        const { right, up, front } = axes;
        const far = x * front[0] + y * front[1] + z * front[2];
        if (far < 0.05) return false;
        point[0] = halfWidth + depth * (x * right[0] + y * right[1] + z * right[2]) / far;
        point[1] = halfHeight - depth * (x * up[0] + y * up[1] + z * up[2]) / far;
        return true;
    };

    const l = [0, 0], r = [0, 0], t = [0, 0], b = [0, 0];
    // A cell through the middles of its four sides.
    const drawCell = (block, west, east, north, south, sx, sy, sw, sh) => {
        const longitude = (west + east) / 2, latitude = (north + south) / 2;
        if (!project(west, latitude, l) || !project(east, latitude, r)) return;
        if (!project(longitude, north, t) || !project(longitude, south, b)) return;
        const ux = r[0] - l[0], uy = r[1] - l[1], vx = b[0] - t[0], vy = b[1] - t[1];
        const mx = (l[0] + r[0] + t[0] + b[0]) / 4, my = (l[1] + r[1] + t[1] + b[1]) / 4;
        const aroundX = (Math.abs(ux) + Math.abs(vx)) / 2 + 2, aroundY = (Math.abs(uy) + Math.abs(vy)) / 2 + 2;
        if (mx + aroundX < 0 || mx - aroundX > canvas.width) return;
        if (my + aroundY < 0 || my - aroundY > canvas.height) return;
        // So much of the cell is `reach`, measured across the cell's sides.
        const area = Math.abs(ux * vy - uy * vx);
        if (area < 1e-6) return;
        const overX = reach * Math.hypot(vx, vy) / area, overY = reach * Math.hypot(ux, uy) / area;
        const marginX = Math.min(overX * sw, margin - 1), marginY = Math.min(overY * sh, margin - 1);
        context.setTransform(ux, uy, vx, vy, mx - (ux + vx) / 2, my - (uy + vy) / 2);
        context.drawImage(block, sx - marginX, sy - marginY, sw + 2 * marginX, sh + 2 * marginY,
                          -overX, -overY, 1 + 2 * overX, 1 + 2 * overY);
    };

    return {
        kind: "canvas",
        canvas,
        // moving: coarser, for the next view comes at once. True when the view is as good as it gets.
        paint(moving) {
            axes = cameraAxes();
            halfWidth = canvas.width / 2;
            halfHeight = canvas.height / 2;
            depth = focalDepth(canvas.width, canvas.height);
            const { size, blocks } = blocksFor(depth) ?? {};
            if (!blocks) return true;
            // A parallelogram differs from the true cell by about depth x angle^2 / 4.
            const angle = Math.sqrt((moving ? 4 : 1) / depth);
            const rows = Math.ceil(blockAngle / angle);
            const halfView = Math.atan(Math.hypot(halfWidth, halfHeight) / depth);
            const nearest = Math.cos(Math.min(Math.PI, halfView + 33 * radian));
            context.setTransform(1, 0, 0, 1, 0, 0);
            context.fillRect(0, 0, canvas.width, canvas.height);
            blocks.forEach((block, i) => {
                const west = (i % 8) * blockAngle - Math.PI, north = Math.PI / 2 - (i >> 3) * blockAngle;
                const longitude = west + blockAngle / 2, latitude = north - blockAngle / 2;
                const c = Math.cos(latitude), [fx, fy, fz] = axes.front;
                if (c * Math.sin(longitude) * fx + Math.sin(latitude) * fy + c * Math.cos(longitude) * fz < nearest) {
                    return;
                }
                for (let row = 0; row < rows; ++row) {
                    const upper = north - blockAngle * row / rows, lower = north - blockAngle * (row + 1) / rows;
                    // Fewer, longer cells towards the poles, but short enough to follow the circle.
                    const stretch = Math.max(Math.sqrt(Math.cos((upper + lower) / 2)), 0.3);
                    const columns = Math.ceil(blockAngle * stretch / angle);
                    const sw = size / columns, sh = size / rows;
                    for (let column = 0; column < columns; ++column) {
                        drawCell(block, west + blockAngle * column / columns,
                                 west + blockAngle * (column + 1) / columns, upper, lower,
                                 margin + column * sw, margin + row * sh, sw, sh);
                    }
                }
            });
            return !moving;
        },
    };
}

// ---- when to paint ----------------------------------------------------------------------------------------

let painter = null;
let asked = false;       // a frame is on its way
let movedAt = -Infinity; // when the view last changed
let turning = false;
let lastFrame = 0;

function show(next) {
    painter?.canvas.remove();
    painter = next;
    document.documentElement.dataset.painter = painter ? painter.kind : "none";
    if (!painter) return say("The photo cannot be shown: this browser has no canvas to draw on.");
    view.append(painter.canvas);
    resize();
}

function askForFrame() {
    if (asked || !painter) return;
    asked = true;
    requestAnimationFrame(frame);
}

function frame(now) {
    asked = false;
    if (turning) {
        camera.heading += turnPerSecond * clamp((now - lastFrame) / 1000, 0, 0.1);
        keepWithinLimits(camera);
        movedAt = now;
    }
    lastFrame = now;
    const complete = painter.paint(now - movedAt < 120);
    if (turning || !complete) askForFrame();
}

function resize() {
    if (!painter) return;
    // Both sides in the screen's own pixels.
    const width = Math.max(1, Math.round(view.clientWidth * devicePixelRatio));
    const height = Math.max(1, Math.round(view.clientHeight * devicePixelRatio));
    if (painter.canvas.width !== width || painter.canvas.height !== height) {
        painter.canvas.width = width;
        painter.canvas.height = height;
    }
    askForFrame();
}

function say(text) {
    message.textContent = text;
}

// Where the view looks, in words, once it rests.
let tellLater = 0;
function tellPlace() {
    clearTimeout(tellLater);
    tellLater = setTimeout(() => {
        const degrees = (angle) => Math.round(Math.abs(angle) / radian) + "\u00b0";
        const side = camera.heading < 0 ? " to the left" : " to the right";
        const height = camera.pitch < 0 ? " down" : " up";
        place.textContent = "Looking " + degrees(camera.heading) + side + ", " + degrees(camera.pitch) + height +
            ", " + degrees(camera.fov) + " wide";
    }, 500);
}

// Every movement of the user's ends here.
function moved() {
    turning = false;
    keepWithinLimits(camera);
    movedAt = performance.now();
    tellPlace();
    askForFrame();
}

// ---- what the user does -----------------------------------------------------------------------------------

const pointers = new Map();

function pointerSpread() {
    const [a, b] = [...pointers.values()];
    return Math.max(1, Math.hypot(a.x - b.x, a.y - b.y));
}

view.addEventListener("pointerdown", (event) => {
    if (event.pointerType === "mouse" && event.button !== 0) return;
    if (pointers.size === 2) return;
    pointers.set(event.pointerId, { x: event.clientX, y: event.clientY });
    view.setPointerCapture(event.pointerId);
    view.classList.add("dragged");
    turning = false;
});

view.addEventListener("pointermove", (event) => {
    const pointer = pointers.get(event.pointerId);
    if (!pointer) return;
    const before = pointers.size === 2 ? pointerSpread() : 0;
    // The photo follows the pointer; two fingers move it by what they have in common.
    const depth = focalDepth(view.clientWidth, view.clientHeight) * pointers.size;
    camera.heading -= Math.atan((event.clientX - pointer.x) / depth);
    camera.pitch += Math.atan((event.clientY - pointer.y) / depth);
    pointer.x = event.clientX;
    pointer.y = event.clientY;
    if (before) camera.fov *= before / pointerSpread();
    moved();
});

for (const kind of ["pointerup", "pointercancel", "lostpointercapture"]) {
    view.addEventListener(kind, (event) => {
        pointers.delete(event.pointerId);
        if (pointers.size === 0) view.classList.remove("dragged");
    });
}

view.addEventListener("wheel", (event) => {
    event.preventDefault();
    // Lines and pages as the pixels they usually are.
    const pixels = event.deltaY * [1, 33, 400][event.deltaMode];
    camera.fov *= Math.exp(clamp(pixels, -400, 400) / 800);
    moved();
}, { passive: false });

function toggleFullScreen() {
    const viewer = document.getElementById("viewer");
    const change = document.fullscreenElement ? document.exitFullscreen() : viewer.requestFullscreen();
    change.catch(() => {});  // refused: all stays as it is
}

const keys = {
    ArrowLeft() { camera.heading -= keyStep * camera.fov / firstFov; },
    ArrowRight() { camera.heading += keyStep * camera.fov / firstFov; },
    ArrowUp() { camera.pitch += keyStep * camera.fov / firstFov; },
    ArrowDown() { camera.pitch -= keyStep * camera.fov / firstFov; },
    "+"() { camera.fov /= keyZoom; },
    "-"() { camera.fov *= keyZoom; },
    Home() { Object.assign(camera, start); },
};
keys["="] = keys["+"];  // the same key without Shift

document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    if (event.key.toLowerCase() === "f") {
        if (document.fullscreenEnabled && !event.repeat) toggleFullScreen();
    } else if (Object.hasOwn(keys, event.key)) {
        keys[event.key]();
        moved();
    } else {
        return;
    }
    event.preventDefault();
});

fullScreenButton.hidden = !document.fullscreenEnabled;
fullScreenButton.addEventListener("click", toggleFullScreen);
document.addEventListener("fullscreenchange", () => {
    const text = document.fullscreenElement ? "Leave full screen" : "Full screen";
    fullScreenButton.setAttribute("aria-label", text);
    fullScreenButton.title = text + " (F)";
});

// ---- beginning --------------------------------------------------------------------------------------------

const still = matchMedia("(prefers-reduced-motion: reduce)");
still.addEventListener("change", () => { turning = turning && !still.matches; });

turning = !readStart() && !still.matches;
addEventListener("hashchange", () => {
    readStart();
    moved();
});
new ResizeObserver(resize).observe(view);
addEventListener("resize", resize);  // another screen with another pixel density

say("Loading the photo\u2026");
const addresses = pictureAddresses();
loadPicture(addresses).then(({ image, name }) => {
    say("");
    document.title = name;
    view.setAttribute("aria-label", "360\u00b0 photo " + name);
    const onCanvas = () => show(canvasPainter(image));
    const onWebgl = webglPainter(image, onCanvas);
    if (onWebgl) show(onWebgl);
    else onCanvas();
    view.focus({ preventScroll: true });
}, () => {
    document.documentElement.dataset.painter = "none";
    turning = false;
    say("The photo \u201c" + (addresses.length ? decoded(addresses[0]) : "?") + "\u201d cannot be shown. It has to lie " +
        "in the same folder as this page, and may be missing, of a kind this browser does not know, or too large for it.");
});

})();
