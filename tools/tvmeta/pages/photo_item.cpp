#include "pages/photo_item.h"

#include "base/markup.h"

namespace {

constexpr const char* NoThumbnail = "no thumbnail";

// A JPEG inside the page.
std::string dataUrl(const Bytes& jpeg) {
    return "data:image/jpeg;base64," + base64(jpeg);
}

std::string image(const std::string& source, const std::string& alternative, const std::string& attributes) {
    return "<img loading=\"lazy\"" + attribute("alt", alternative) + attributes + attribute("src", source) + ">";
}

std::string turn(const PagePhoto& photo) {
    const bool isTurned = photo.orientation >= 2 && photo.orientation <= 8;
    return isTurned ? "o" + std::to_string(photo.orientation) : "";
}

std::string smallPicture(const PagePhoto& photo) {
    const Bytes thumbnail = photo.thumbnail();
    const std::string turned = turn(photo);
    return thumbnail.empty() ? NoThumbnail
                             : image(dataUrl(thumbnail), "Thumbnail of " + markup(photo.name),
                                     turned.empty() ? "" : attribute("class", turned));
}

// Hidden until the button is pressed; browsers load it then. They turn a file by its own orientation.
std::string largePicture(const PagePhoto& photo, const std::string& id) {
    const Bytes preview = photo.preview ? photo.preview() : Bytes();
    const std::string attributes = attribute("id", id) + " popover";
    return !preview.empty()
               ? image(dataUrl(preview), markup(photo.name), attribute("class", "large " + turn(photo)) + attributes)
           : photo.isShownByBrowsers ? image(photo.url, markup(photo.name), attribute("class", "large") + attributes)
                                     : "";
}

} // namespace

std::string photoItem(const PagePhoto& photo, const std::string& facts, const std::string& id) {
    const std::string small = smallPicture(photo);
    const std::string large = largePicture(photo, id);
    const std::string frame = attribute("class", "frame");
    const std::string label =
        "Enlarge " + markup(photo.name) + (small == NoThumbnail ? std::string(", ") + NoThumbnail : "");
    return element("li", (large.empty() ? element("div", small, frame)
                                        : element("button", small,
                                                  frame + attribute("type", "button") + attribute("popovertarget", id) +
                                                      attribute("aria-label", label)) +
                                              large) +
                             element("p", facts + element("a", markup(photo.name), attribute("href", photo.url)))) +
           "\n";
}
