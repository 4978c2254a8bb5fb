#pragma once

namespace brevant::platform::geodatabase {
class FeatureClass;
class Table;
} // namespace brevant::platform::geodatabase

namespace brevant::context {

/// Appends to the tract hazard table `eqTract` one point per row of the server tract table
/// (x "CenLongit", y "CenLat"; "Tract", "Longitude" and "Latitude" copied), then sets the
/// default site conditions of every record: "stype" "D", "lqfsuscat" "0", "lndsuscat" "0",
/// "w_depth" "5.0" (UpdateFieldValue). The table is not emptied first. A missing field is
/// an invalid argument naming it.
void appendTractPoints(const platform::geodatabase::Table& serverTracts,
                       platform::geodatabase::FeatureClass& eqTract);

/// Fills "eqTract" of RegionFolder + "RegionBndry.mdb" from the server table "hztract" as
/// appendTractPoints does; the analyses and the data-map sync both rebuild an empty tract
/// table this way. Tag " RecreateTractHFT".
void RecreateTractHFT();

} // namespace brevant::context
