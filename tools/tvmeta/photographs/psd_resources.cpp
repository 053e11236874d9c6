#include "photographs/psd_resources.h"

#include <tvmeta.h>

// Photoshop file format: the header and the colour table precede the image resources. A resource is a signature, a
// number, a name with its length, and data with theirs; names and data are padded to even lengths. Behind the end of
// the file no signature is found.
Region findPsdResource(std::FILE* file, int32_t number) {
    constexpr long HeaderSize = 26;
    constexpr int32_t Signature = 0x3842494D; // 8BIM
    std::fseek(file, HeaderSize, SEEK_CUR);
    std::fseek(file, fgetm4(file), SEEK_CUR);
    std::fseek(file, 4, SEEK_CUR); // the length of all resources, which end where no signature follows
    while (fgetm4(file) == Signature) {
        const int32_t found = fgetm2(file);
        const int nameLength = std::fgetc(file);
        std::fseek(file, nameLength | 1, SEEK_CUR);
        const int32_t length = fgetm4(file);
        if (length < 0) {
            break;
        }
        if (found == number) {
            return {static_cast<int32_t>(std::ftell(file)), length};
        }
        std::fseek(file, long{length} + (length & 1), SEEK_CUR);
    }
    return {};
}
