#include "engine/CIO.h"

#include <algorithm>

CInputChannel::CInputChannel(CComp* owner) {
    category = categoryChannel;
    type = channelInput;
    comp = owner;
}

CInputChannel::~CInputChannel() {
    destroyBuffers();
}

void CInputChannel::createBuffers(int frames) {
    createStereo(bufL, bufR, frames);
}

void CInputChannel::destroyBuffers() {
    destroyStereo(bufL, bufR);
}

void createStereo(float*& left, float*& right, int frames) {
    destroyStereo(left, right);
    left = new float[size_t(std::max(frames, 0))]();
    right = new float[size_t(std::max(frames, 0))]();
}

void destroyStereo(float*& left, float*& right) {
    delete[] left;
    delete[] right;
    left = right = nullptr;
}
