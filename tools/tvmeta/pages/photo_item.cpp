#include "pages/report_parts.h"

#include "base/markup.h"

namespace {

constexpr const char* NoThumbnail = "no thumbnail";

// A JPEG inside the page.
std::string dataUrl(const Bytes& jpeg) {
    return "data:image/jpeg;base64," + base64(jpeg);
}

std::string turn(const PagePhoto& photo) {
    const bool isTurned = photo.orientation >= 2 && photo.orientation <= 8;
    return isTurned ? "o" + std::to_string(photo.orientation) : "";
}

std::string smallPicture(const PagePhoto& photo) {
    const Bytes thumbnail = photo.thumbnail();
    const std::string turned = turn(photo);
    return thumbnail.empty()
               ? NoThumbnail
               : "<img loading=\"lazy\"" + attribute("alt", "Thumbnail of " + markup(photo.name)) +
                     (turned.empty() ? "" : attribute("class", turned)) + attribute("src", dataUrl(thumbnail)) + ">";
}

// Hidden until it is opened, and closed by a click. Browsers prepare every img of a page, but the background of an
// element only when it is shown; they turn a file by its own orientation. Neither source has characters to escape.
std::string largePicture(const PagePhoto& photo, const std::string& id) {
    const Bytes preview = photo.preview ? photo.preview() : Bytes();
    if (preview.empty() && !photo.isShownByBrowsers) {
        return "";
    }
    const std::string turned = preview.empty() ? "" : turn(photo);
    const std::string source = preview.empty() ? photo.url : dataUrl(preview);
    return element("button", "",
                   attribute("class", turned.empty() ? "large" : "large " + turned) + attribute("id", id) +
                       " popover type=\"button\"" + attribute("popovertarget", id) +
                       attribute("aria-label", "Close " + markup(photo.name)) +
                       attribute("style", "background-image: url(" + source + ")"));
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
