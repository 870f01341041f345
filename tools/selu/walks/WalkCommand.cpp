#include "Commands.h"
#include "images/ImageFile.h"
#include "walks/WalkRun.h"

#include <CLI/CLI.hpp>

#include <array>
#include <memory>

namespace selu {
namespace {

using Options = std::shared_ptr<StWalkOptions>;

void AddCorners(CLI::App& command, Options const& options) {
  command.add_option("CORNER", options->points, "x,y or x,y,z of each corner in turn");
  command.add_option("--corners", options->corners,
                     "CSV file with a corner a line in place of the arguments");
  command.add_flag("--without-border", options->withoutBorder, "leave the digital border out");
}

void AddNeighborhood(CLI::App& command, Options const& options, std::string const& text) {
  command.add_option("--neighborhood,--neighbourhood", options->neighborhood, text);
}
constexpr char c_neighborhoods[] =
    "moves of the digital lines: 4, 6.1, 6.2 or 8 (default) in 2D, 6, 14.1, 14.2 or 26 (default) "
    "in 3D";

void AddBox(CLI::App& command, Options const& options) {
  command.add_option("--low", options->low, "x,y[,z]: the box's first voxel");
  command.add_option("--high", options->high, "x,y[,z]: its last voxel");
}

void AddSize(CLI::App& command, Options const& options) {
  command.add_option("--size", options->size, "nx,ny[,nz]: size of an image, where none is given");
}

void AddMethod(CLI::App& command, Options const& options, std::string const& other,
               std::string const& text) {
  command.add_option("--method", options->method, text)
      ->check(CLI::IsMember(std::vector<std::string>{"exact", other}));
}

void AddLineOptions(CLI::App& command, Options const& options) {
  command.add_option("POINT", options->points, "FROM TO: x,y or x,y,z of the line's ends")
      ->required();
  AddNeighborhood(command, options, c_neighborhoods);
  command.add_option("--ends", options->ends, "both or none of the two end points")
      ->check(CLI::IsMember({"both", "none"}))
      ->capture_default_str();
  command.add_flag("--profile", options->profile,
                   "add the distance along the ideal line; the picture is then a plot of the "
                   "values");
}

void AddOutlineOptions(CLI::App& command, Options const& options) {
  AddCorners(command, options);
  AddNeighborhood(command, options, c_neighborhoods);
}

// Which points count where corners or edges leave a choice.
void AddRules(CLI::App& command, Options const& options) {
  command
      .add_option("--boundary", options->boundary,
                  "points exactly on the boundary: open (none), half-open (each of one of the "
                  "shapes that share it) or closed (all)")
      ->check(CLI::IsMember({"open", "half-open", "closed"}));
  command
      .add_option("--winding", options->winding,
                  "what is inside where outlines or surfaces cross: even-odd (default) or non-zero")
      ->check(CLI::IsMember({"even-odd", "non-zero"}));
}

void AddPolygonOptions(CLI::App& command, Options const& options) {
  AddOutlineOptions(command, options);
  AddRules(command, options);
  command.add_option("--hole", options->holes, "CSV file with the corners of a hole; repeatable")
      ->expected(1)
      ->allow_extra_args(false)
      ->take_all();
}

void AddVolumeOptions(CLI::App& command, Options const& options) {
  AddCorners(command, options);
  AddNeighborhood(command, options, "moves of the digital lines: 6 or 26 (default)");
  command.add_flag("--edges", options->edges,
                   "the corners are both ends of each edge in turn, not a path along the edges");
}

void AddSolidOptions(CLI::App& command, Options const& options) {
  command.add_option("--mesh", options->mesh, "OFF or STL file of a closed surface");
  command.add_option("--scale", options->scale, "voxels per unit of the mesh; 1 by default");
  command.add_option("--shift", options->shift, "x,y,z in voxels, added to the scaled mesh");
  AddCorners(command, options);
  command
      .add_option("--face", options->faces,
                  "i,j,k,...: a face by its corners, from 0 on; repeatable")
      ->expected(1)
      ->allow_extra_args(false)
      ->take_all();
  command.add_option("--faces", options->facesFile,
                     "CSV file with a face a line in place of --face");
  AddNeighborhood(command, options, "moves of the digital faces: 6, 14.1, 14.2 or 26 (default)");
  AddRules(command, options);
}

void AddSliceOptions(CLI::App& command, Options const& options) {
  command.add_option("POINT", options->points, "three points x,y,z of the plane");
  command.add_option("--normal", options->normal,
                     "x,y,z of the plane normal*p = distance, of any length");
  command.add_option("--distance", options->distance, "the other side of that equation");
  AddMethod(command, options, "lattice",
            "exact (default): every voxel once; lattice: two digital lines span the plane");
  AddNeighborhood(command, options, "of the lattice's lines: 6, 14.1, 14.2 or 26 (default)");
  AddSize(command, options);
  command.add_option("--range", options->range, "LO,HI: values that become black and white");
}

void AddWindowOptions(CLI::App& command, Options const& options) {
  AddBox(command, options);
  AddSize(command, options);
}

void AddDeltaOptions(CLI::App& command, Options const& options) {
  command.add_option("DIRECTION", options->direction, "x,y or x,y,z: real numbers, of any length")
      ->required();
  AddMethod(command, options, "plain",
            "exact (default): every voxel once; plain: as the plain delta visitor walks");
  AddSize(command, options);
}

void AddDirectionOptions(CLI::App& command, Options const& options) {
  command.add_option("DIRECTION", options->direction, "x,y or x,y,z: components -1, 0 or 1")
      ->required();
  AddBox(command, options);
  AddSize(command, options);
}

struct StKind {
  EnWalk kind;
  char const *name, *text;
  void (*addOptions)(CLI::App&, Options const&);
  char const* help;
};
constexpr std::array<StKind, 9> c_kinds = {{
    {EnWalk::Line, "line", "A digital line from point to point", AddLineOptions,
     R"(With --profile the distance is that of the voxel's foot on the ideal line from FROM, in the
image's voxel spacing where it has one, else in voxels.

Examples:
  selu walk line 0,0,0 10,4,2 --neighborhood 6 --picture line.png
  selu walk line -5,3 60,40 --image brick.png --profile -o profile.csv --picture profile.png)"},
    {EnWalk::Area, "area", "The points of a convex polygon, column by column", AddOutlineOptions,
     R"(For convex outlines; concave ones and such with vertical edges between their corners lose points,
and selu walk polygon serves all. Oblique areas take the neighborhoods 14.1 and 26, areas in a
coordinate plane of a volume 6 and 26.

Example:
  selu walk area 0,0 10,2 5,9 --without-border)"},
    {EnWalk::Polygon, "polygon", "The points of any simple polygon, column by column",
     AddPolygonOptions,
     R"(The outline may be concave, have holes, and lie in any plane of a volume. Corners between the pixels
are taken as they are: then, and with --boundary or --winding, the outline and the holes lie in one
slice, the points are those exactly inside or on it, row by row, and there is no digital border.

Examples:
  selu walk polygon 0,0 10,0 10,10 --picture triangle.png
  selu walk polygon 0.5,0.25 9.1,0 4.4,7.75 --boundary half-open
  selu walk polygon --corners outline.csv --hole hole.csv --image a.nrrd --paint 255 -o b.nrrd)"},
    {EnWalk::Volume, "volume", "The points of a convex solid, slice by slice", AddVolumeOptions,
     R"(The corners are a path along all edges of the solid, which is closed to its first corner; an edge
may be passed more than once. x must be 0 or more. Every slice of constant x is filled within the
convex hull of its border points.

Example:
  selu walk volume --edges 0,0,0 9,0,0 0,9,0 9,0,0 0,0,9 9,0,0 --picture pyramid.png)"},
    {EnWalk::Solid, "solid", "The points of any closed solid, row by row", AddSolidOptions,
     R"(Triangles or flat faces, concave ones too, of any closed surface, with holes and cavities, whatever
their orientation. With whole corners the digital faces belong to the walk, unless --without-border
or --boundary says otherwise; other corners, which are taken to 1/65536 voxel or, of large meshes,
less finely, have no digital faces but the points exactly on the surface. Faces that are not flat
are taken as triangles from their first corner. The picture has a view of the solid, seen from high
x, high y and low z.

Examples:
  selu walk solid --mesh part.stl --scale 2.5 --picture part.png
  selu walk solid 0,0,0 9,0,0 0,9,0 0,0,9 --face 0,1,2 --face 0,1,3 --face 0,2,3 --face 1,2,3
  selu walk solid --mesh organ.off --image scan.nrrd --paint 255 -o painted.nrrd)"},
    {EnWalk::Slice, "slice", "The voxels of a plane through a volume", AddSliceOptions,
     R"(The exact walk has one voxel for each column along the axis of the normal's largest component, in
raster order. The lattice strays from oblique planes by up to two voxels, and can repeat or miss
some.

With --image, --picture writes the resampled plane as a gray PNG: its columns and rows are the two
other axes in their order, places without a voxel of the plane are black. Unsigned 8 and 16-bit
values stay as they are; with --range, and for other types, they are mapped to 8 bits, without
--range from the plane's least and greatest value.

Example:
  selu walk slice --normal 1,2,2 --distance 300 --image scan.nrrd --picture plane.png)"},
    {EnWalk::Window, "window", "All voxels of a box in raster order", AddWindowOptions,
     R"(The box is clipped to the image; without --low and --high it is the whole image.

Example:
  selu walk window --low 2,2 --high 5,4)"},
    {EnWalk::Delta, "delta", "A whole image along parallel digital lines of any direction",
     AddDeltaOptions,
     R"(A line that leaves the image goes on at the opposite side. The exact walk visits every voxel once,
for every direction. The plain one serves directions whose two smaller components are not
negative, ends early for others, needs a direction of length 1 or more, and has its axes rotated
where z is the main axis.

Example:
  selu walk delta 1,0.4 --size 24,16 --picture delta.png)"},
    {EnWalk::Direction, "direction", "A box along lines of one of the 26 unit directions",
     AddDirectionOptions,
     R"(The lines begin on the faces where the direction enters the box. Where the first of these has a
single voxel and the direction more than one component, the walk ends after that voxel's line.

Example:
  selu walk direction 1,-1 --size 12,8 --picture direction.png)"},
}};

constexpr char c_outputHelp[] =
    R"(The points are printed as x,y[,z], with --image and the value of each. --picture draws the walk
(unless said otherwise below) and, without -o, takes the place of the points: voxels as squares in
the colors of their order, a 3D walk as three projections, and over them the ideal lines where a
square is larger than a pixel. Points outside the image are left out, and a note counts them. JSON
has neither NaN nor infinity: such a value is null there. --paint keeps the pixel type, and the
spacing, origin and orientation of the image.

)";

void AddKind(CLI::App& walk, StKind const& kind) {
  auto const options = std::make_shared<StWalkOptions>();
  CLI::App* const command = walk.add_subcommand(kind.name, kind.text);
  kind.addOptions(*command, options);
  command->add_option("--image", options->image,
                      std::string(c_imageHelp) + ": read the values there");
  command->add_option("--series", options->series, c_seriesHelp);
  command->add_option("--paint", options->paint,
                      "write this value to the voxels of the walk, and the image to -o");
  command
      ->add_option("--format", options->format,
                   "csv or json; by default what the output's ending says, else csv")
      ->check(CLI::IsMember({"csv", "json"}));
  command->add_option(
      "-o,--output", options->output,
      "file for the points, standard output without it; with --paint an image ending "
      "in .nrrd, .mha, .nii, .nii.gz, .tif or .png");
  command->add_option("--picture", options->picture, "file ending in .png or .svg");
  command->footer(std::string(c_outputHelp) + kind.help);
  command->callback([&kind, options] { RunWalk(kind.kind, *options); });
}

} // namespace

void AddWalkCommand(CLI::App& app) {
  CLI::App* const walk = app.add_subcommand(
      "walk", "The voxels of lines, areas, solids, planes and boxes: print, read, paint, draw");
  walk->require_subcommand(1);
  walk->footer(R"(Examples:
  selu walk line 0,0,0 10,4,2
  selu walk polygon 0,0 10,0 10,10 --picture triangle.png

Each kind has a help page of its own: selu walk line --help)");
  for (auto const& kind : c_kinds) AddKind(*walk, kind);
}

} // namespace selu
