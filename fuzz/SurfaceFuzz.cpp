#include "base/CStream.h"
#include "surfaces/SurfaceDef.h"

#include <cstdlib>
#include <cstring>

// Definitions of controllers: any bytes are read and written, and what was written is read as the
// same.

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    CMemoryStream in, once, twice;
    in.write(data, int(size));
    SurfaceDef def, again;
    in.setPos(0);
    def.read(&in);
    def.write(&once);
    once.setPos(0);
    again.read(&once);
    again.write(&twice);
    if (once.size != twice.size || std::memcmp(once.data, twice.data, size_t(once.size)) != 0)
        abort();
    return 0;
}
