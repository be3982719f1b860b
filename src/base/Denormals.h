#pragma once

/// Has the calling thread treat denormal floats as 0 from now on, where the machine can.
void flushDenormals();
