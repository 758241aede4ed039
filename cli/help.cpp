#include "cli/help.h"

namespace skyvault {

namespace {

/// The console names of the layouts that fit, indented, in lines of at most 78 columns.
std::string LayoutNames(bool (*fits)(const LayoutRow&)) {
    std::string text = " ";
    std::size_t column = text.size();
    for (const LayoutRow& layout : Layouts()) {
        if (!fits(layout)) continue;
        const std::string word = layout.consoleName;
        if (column + 1 + word.size() > 78) {
            text += "\n ";
            column = 1;
        }
        text += " " + word;
        column += 1 + word.size();
    }
    return text + "\n";
}

}  // namespace

bool IsImportLayout(const LayoutRow& layout) {
    return layout.kind == LayoutKind::Panorama;
}

bool IsExportLayout(const LayoutRow& layout) {
    return layout.kind != LayoutKind::Generator;
}

bool IsGenerator(const LayoutRow& layout) {
    return layout.kind == LayoutKind::Generator;
}

std::string MainFooter() {
    return "Exit status: 0 done, 1 failed, 2 wrong usage, 130 interrupted.\n\n"
           "COMMAND --help describes a command.\n\nExamples:\n"
           "  skyvault-cli convert --from equirectangular --to preview lake.jpg view.png\n"
           "  skyvault-cli generate voronoi --palette sunset.png --to equirectangular cells.png\n"
           "  skyvault-cli batch --from equirectangular --to dds photos cubemaps\n"
           "  skyvault-cli info lake.jpg";
}

std::string ConvertFooter() {
    return "Layouts to read (--from):\n" + LayoutNames(IsImportLayout) + "Layouts to write (--to):\n" +
           LayoutNames(IsExportLayout) +
           "\n"
           "OUTPUT's extension chooses the file type: bmp dds exr gif hdr heic jpg png tif; for\n"
           "--to dds it is dds. An older file is replaced once the new one is whole. The written file is\n"
           "described on stdout.\n\n"
           "Examples:\n"
           "  Turn a panorama 90 degrees to the right and level it by two degrees of roll:\n"
           "    skyvault-cli convert --from equirectangular --to equirectangular \\\n"
           "        --turn 90,0,0 --turn 0,0,-2 lake.jpg turned.jpg\n"
           "  An 8192 x 4096 panorama with 16 bits per channel and its alpha channel kept:\n"
           "    skyvault-cli convert --from equirectangular --to equirectangular \\\n"
           "        --set Resolution1=5 --set Transparency=Y in.tif out.png\n"
           "  What a camera sees that looks to the left and a little up, in 1920 x 1080:\n"
           "    skyvault-cli convert --from equirectangular --to preview --set Resolution3=1 \\\n"
           "        --set PreviewFOV=0.5 --camera -90,-10,0 lake.jpg view.png\n"
           "  A cube map as engines want it:\n"
           "    skyvault-cli convert --from equirectangular --to dds --dds bc7 --mips lake.jpg lake.dds";
}

std::string GenerateFooter() {
    return "Kinds:\n" + LayoutNames(IsGenerator) + "Layouts (--to):\n" + LayoutNames(IsExportLayout) +
           "\n"
           "The faces are as large as Resolution0 says; the settings Voronoi..., Fractal..., Lights...,\n"
           "Blobs... and Polyhedra... are those of the options dialog.\n\n"
           "Examples:\n"
           "  The same cells every time, as a DDS cube map with faces of 2048 x 2048:\n"
           "    skyvault-cli generate voronoi --palette sunset.png --seed 7 --to dds \\\n"
           "        --set Resolution0=3 --set VoronoiPoints=500 --set VoronoiBorder=0.002 cells.dds\n"
           "  A football from inside, its pentagons and hexagons from the texture's two frames:\n"
           "    skyvault-cli generate football --palette \"Texture football, 2 frames.png\" \\\n"
           "        --set PolyhedraFrames=2 --to preview football.png";
}

std::string BatchFooter() {
    return "Layouts:\n" + LayoutNames(IsImportLayout) +
           "\n"
           "Every file directly in SOURCE_DIR whose type fits --from is converted; a result is named after\n"
           "its source. DDS cube maps get the prefix cubemap_, sphere maps spheremap_. Of six single files\n"
           "the one with the front face's part (FileNamingSystem) stands for all. What fails is named on\n"
           "stderr and the rest is converted; the last line on stdout counts. Exit status 1: any failed.\n\n"
           "Examples:\n"
           "  A folder of photos as cube maps, in six files each:\n"
           "    skyvault-cli batch --from equirectangular --to single-files --extension jpg \\\n"
           "        --subfolders photos faces\n"
           "  The second of four machines, started again after an interruption:\n"
           "    skyvault-cli batch --from equirectangular --to dds --shard 2/4 --skip-existing \\\n"
           "        photos cubemaps";
}

std::string InfoFooter() {
    return "Prints path, size, resolution, pixel format, number of frames, and the cube faces a\n"
           "panorama of the picture would have; of a DDS cube map the size of its six faces. Of a photo\n"
           "also what it carries: colour profile, camera, when it was taken, whether it tells its\n"
           "position, and its panorama properties. Tab-separated, one a line.\n\n"
           "Example:\n"
           "  skyvault-cli info \"Mountain lake.jpg\"";
}

}  // namespace skyvault
