#pragma once

#include <Varnet64.h>

#include <string>

/// Divides the model into feature surfaces: by similar normals ("normal"), by the octant of the normal
/// ("eight"), or into shells of one winding ("winding"). Every surface has its rim in m_VergeList.
void DivideModel(CSTLModel& model, std::string const& judge);

/// The length of a surface's rim, from m_VergeList.
double RimLength(CFeatureSurface const& surface);
