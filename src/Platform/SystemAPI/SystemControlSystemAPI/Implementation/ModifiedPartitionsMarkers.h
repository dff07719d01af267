#pragma once

namespace DAX::Platform::ModifiedPartitionsMarkers {

// The marker of modified partitions: an empty file in several places, one of which is enough. ISystemControl documents
// the operations.

void set();
bool isAnySet();
void remove();

} // namespace DAX::Platform::ModifiedPartitionsMarkers
