#include "analysis/contour_rows.h"
#include "analysis/contour_rows_loops.h"

namespace zemora {

const ContourRows kContourRowsAvx2 = kLoops;

}  // namespace zemora
