#pragma once

void BeginFeatureOptions();
void EndFeatureOptions();
