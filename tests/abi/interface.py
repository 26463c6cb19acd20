"""The exported interface, written down a second time: every member of every exported entity, as
nm and c++filt name it. Nothing here is derived from the sources or from the built file."""

CORE = "volux::core::"
STRING = ("std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >")

# In the order of the slots of the policy tables.
ELEMENT_TYPES = ["double", "float", "int", "short", "unsigned int", "unsigned short",
                 "unsigned char"]

BORDERS = [CORE + "Constant", CORE + "Replication", CORE + "Border*"]
KERNELS = [CORE + "NearestNeighbor", CORE + "Linear", CORE + "Cubic"]
INTERPOLATOR = CORE + "Interpolator"

BORDER_TABLE = f"{CORE}Border::border_t<{CORE}Border, {CORE}Border::Empty>"
INTERPOLATOR_TABLE = f"{INTERPOLATOR}::interpolator_t<{INTERPOLATOR}, {INTERPOLATOR}::Empty>"


def class_members(name, *members):
    """Members of a class; "~" and "()" stand for its own name."""
    own = name.split("<")[0].split("::")[-1]
    return [f"{name}::{member.replace('~', '~' + own).replace('$', own)}" for member in members]


def run_time_type(name):
    return [f"typeinfo for {name}", f"typeinfo name for {name}"]


def polymorphic(name):
    return run_time_type(name) + [f"vtable for {name}"]


def exception():
    name = "volux::base::Exception"
    return polymorphic(name) + class_members(
        name, f"$({STRING}, {STRING}, int)", f"$({name} const&)", f"operator=({name} const&)",
        "~()", "what() const")


def value_types():
    u4, u6, d3 = (", ".join([kind] * n) for kind, n in
                  (("unsigned int", 4), ("unsigned int", 6), ("double", 3)))
    size, spacing, rect = CORE + "ImageSize", CORE + "VoxelSize", CORE + "Rect"

    def assignments(name):
        return [f"operator=({name} const&)", f"operator=({name}&&)"]

    def comparisons(name):
        return [f"operator==({name} const&) const", f"operator!=({name} const&) const"]

    return (class_members(size, "$()", f"$({u4})", *assignments(size), *comparisons(size)) +
            class_members(spacing, "$()", f"$({d3})", *assignments(spacing), *comparisons(spacing)) +
            class_members(rect, "$()", f"$({u4})", f"$({u6})", *assignments(rect),
                          "width() const", "height() const", "depth() const"))


def policies():
    names = []
    for name in [CORE + "Border", CORE + "Constant", CORE + "Replication", INTERPOLATOR, *KERNELS]:
        names += polymorphic(name) + class_members(
            name, "$()", f"$({name} const&)", f"operator=({name} const&)", "~()")
        if name not in (CORE + "Border", INTERPOLATOR):
            names.append(name + "::get()")
    return names + [f"{CORE}InterpolationType::{o}" for o in ("NEAREST_NEIGHBOR", "LINEAR", "CUBIC")] + [
        f"{CORE}InterpolationBorderType::{o}" for o in ("CONSTANT", "REPLICATION")]


def border_table_slots():
    """The virtual table of the base table of borders, slot by slot."""
    return [f"{BORDER_TABLE}::fetch({CORE}Border&, {CORE}VxImage<{t}> const&, int, int, int, "
            f"unsigned int, {t}, unsigned int, unsigned int, unsigned int)" for t in ELEMENT_TYPES] + [
        f"{BORDER_TABLE}::~border_t()"] * 2


def interpolator_table_slots():
    order = [CORE + "Replication", CORE + "Constant", CORE + "Border*"]
    return [f"{INTERPOLATOR_TABLE}::invoke({INTERPOLATOR}&, {CORE}VxImage<{t}> const&, double, double, "
            f"double, unsigned int, {b}, {t})" for t in ELEMENT_TYPES for b in order] + [
        f"{INTERPOLATOR_TABLE}::~interpolator_t()"] * 2


def base_tables():
    """What a table of the user's own derives from."""
    names = border_table_slots() + interpolator_table_slots()
    for table in (BORDER_TABLE, INTERPOLATOR_TABLE):
        names += polymorphic(table)
    for policy in ("Border", "Interpolator"):
        names += run_time_type(f"{CORE}{policy}::Empty::base_t")
    return sorted(set(names))


def image_members(t):
    image = f"{CORE}VxImage<{t}>"
    u4 = "unsigned int, unsigned int, unsigned int, unsigned int"
    constants = ["kDefaultSize", "kDefaultPosition", "kDefaultVoxelSize", "kDefaultDimension",
                 "kDefaultDimensionWithChannel"]
    return class_members(
        image, "$()", f"$({image} const&)", "~()", f"operator=({image} const&)",
        f"initialize({u4})", f"initialize({image} const&, bool)",
        f"initializeWithPointer({t}*, {u4})", "terminate()", f"setImageSize({u4})",
        f"setImageSize({CORE}ImageSize const&)", "setImageData(void const*, unsigned long)",
        "allocateBuffer(unsigned long)", "freeBuffer()", f"copyFrom({image} const&, bool)",
        f"setImageStride({u4})", f"setDotSequentialStride({u4})",
        "setVoxelSize(double, double, double)", f"setVoxelSize({CORE}VoxelSize const&)",
        "getVoxelSize(double*, double*, double*)", "getVoxelSize(double*, double*)",
        "getVoxelSize()", "getWidth() const", "getHeight() const", "getDepth() const",
        "getChannels() const", "getImageSize()", "getBufferPointer()", "getBufferPointer() const",
        "getBufferSizeBytes() const", f"isValidSize({u4})", "getDataType()", *constants,
        "operator()(int, int, int, int)", "operator()(int, int, int, int) const",
        "getValueVoxel(int, int) const", "getValueVoxel(int, int, int) const",
        "getValueVoxel(int, int, int, int) const", f"setValueVoxel(int, int, int, int, {t})",
        "isInside(unsigned int, unsigned int, unsigned int) const", f"isInside({u4}) const",
        "hasVoxel(int, int, int, int) const", f"fill({t})", f"fill(unsigned int, {t})",
        f"crop({CORE}Rect const&, {image}*)",
        f"draw({image} const&, unsigned int, unsigned int, unsigned int)")


def plane_functions(t):
    image = f"{CORE}VxImage<{t}>"
    return [f"{CORE}ErrorType {CORE}{verb}{plane}Plane<{t}>(unsigned int, {image} const&, {image}*)"
            for verb in ("get", "set") for plane in ("Xy", "Yz", "Zx")]


def sampling_members(t):
    """(result, member, spelling of the run-time interpolator without and with a border)"""
    forms = [(t, "getValueVoxel", INTERPOLATOR, INTERPOLATOR),
             (t, "getValueReal", INTERPOLATOR + "*", INTERPOLATOR + "*"),
             ("double", "getDoubleValueReal", INTERPOLATOR + "*", INTERPOLATOR)]
    names = [f"{CORE}VxImage<{t}>::getValueReal(double, double, double, int) const"]
    for result, member, plain, bordered in forms:
        for spelt, spelt_with_border, argument in [(k, k, k) for k in KERNELS] + [
                (plain, bordered, INTERPOLATOR + "*")]:
            head = f"{result} {CORE}VxImage<{t}>::{member}"
            names.append(f"{head}<{spelt}>(double, double, double, int, {argument}) const")
            names += [f"{head}<{spelt_with_border}, {b}>(double, double, double, int, {argument}, "
                      f"{b}, {t}) const" for b in BORDERS]
    return names


def kernels(t):
    return [f"{t if k.endswith('NearestNeighbor') else 'double'} {k}::operator()<{t}, {b}>("
            f"{CORE}VxImage<{t}> const&, double, double, double, unsigned int, {b}, {t})"
            for k in KERNELS for b in BORDERS]


def fallbacks(t):
    image = f"{CORE}VxImage<{t}> const&"
    position = "double, double, double, unsigned int"
    return [f"{t} {CORE}Border::stub<{t}>({image}, int, int, int, unsigned int, {t}, unsigned int, "
            "unsigned int, unsigned int)",
            f"double {INTERPOLATOR}::stub<{t}, {BORDERS[0]}>({image}, {position}, {BORDERS[0]}, {t})",
            f"double {INTERPOLATOR}::stub<{t}, {BORDERS[1]}>({image}, {position}, {BORDERS[1]}, {t})",
            f"double {INTERPOLATOR}::stub_p<{t}, {CORE}Border>({image}, {position}, {BORDERS[2]}, {t})"]


def per_element_type(t):
    return image_members(t) + plane_functions(t) + sampling_members(t) + kernels(t) + fallbacks(t)


def everything():
    names = exception() + value_types() + policies() + base_tables()
    for t in ELEMENT_TYPES:
        names += per_element_type(t)
    return names
