#pragma once

namespace zqv {

void BeginFeatureOptions();
void EndFeatureOptions();

}  // namespace zqv
