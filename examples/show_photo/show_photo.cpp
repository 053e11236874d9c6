// Prints the camera, lens and exposure of a photograph.
#include <tvmeta.h>

#include <iostream>

int main(int argc, char** argv) {
    ExifInfo photo;
    if (argc != 2 || getExifData(argv[1], FILE_TYPE_JPEG, &photo) != 1) {
        std::cerr << "usage: show_photo PHOTO.jpg\n";
        return 1;
    }
    std::cout << photo.model << ", " << photo.lens << ", " << photo.exposureTime << " s, f/" << photo.fNumber << "\n";
}
