/* Prints camera, time and position of a photograph, a raw file for example. */
#include <stdio.h>
#include <time.h>
#include <tvmeta_photo.h>

int main(int argc, char** argv) {
    tvmeta_Source source;
    tvmeta_Photo photo = {0};
    int32_t status;
    char taken[32] = "unknown time";
    time_t seconds;
    photo.recordSize = sizeof photo;
    if (argc != 2 || tvmeta_open(argv[1], &source) != TVMETA_OK) {
        fprintf(stderr, "usage: show_photo PHOTO\n");
        return 1;
    }
    status = tvmeta_read_photo(&source, &photo);
    tvmeta_close(&source);
    seconds = (time_t)photo.captureTime; /* by the clock of the camera, so no time zone is applied */
    if (TVMETA_HAS(&photo, TVMETA_CAPTURE_TIME) && gmtime(&seconds) != NULL) {
        strftime(taken, sizeof taken, "%Y-%m-%d %H:%M:%S", gmtime(&seconds));
    }
    printf("%s: %s %s, %s", tvmeta_format_name(photo.format), photo.make, photo.model, taken);
    if (TVMETA_HAS(&photo, TVMETA_LATITUDE) && TVMETA_HAS(&photo, TVMETA_LONGITUDE)) {
        printf(", %.4f, %.4f", photo.latitude, photo.longitude);
    }
    printf(" (%s)\n", tvmeta_status_text(status));
    return status == TVMETA_OK ? 0 : 1;
}
