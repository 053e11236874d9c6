/* Prints camera and exposure of a photograph in memory: here, of a file that is read first. */
#include <stdio.h>
#include <tvmeta_photo.h>

static unsigned char bytes[64 << 20];

int main(int argc, char** argv) {
    FILE* file = argc == 2 ? fopen(argv[1], "rb") : NULL;
    size_t size;
    tvmeta_Source source;
    tvmeta_Photo photo = {0};
    photo.recordSize = sizeof photo;
    if (file == NULL) {
        fprintf(stderr, "usage: show_memory PHOTO (its first 64 MiB are read)\n");
        return 1;
    }
    size = fread(bytes, 1, sizeof bytes, file);
    fclose(file);
    if (tvmeta_memory(bytes, (int64_t)size, &source) != TVMETA_OK || tvmeta_read_photo(&source, &photo) != TVMETA_OK) {
        fprintf(stderr, "%s: no photograph, or a damaged one\n", argv[1]);
        return 1;
    }
    printf("%s, %d/%d s, ISO %d\n", photo.model, (int)photo.exposureTime.numerator, (int)photo.exposureTime.denominator,
           (int)photo.isoSpeed);
    return 0;
}
