// A host program built against the installed kit: it must find the package, include the
// public headers and link.
#include <OrvantaARFoodSDK/Food.h>
#include <OrvantaARFoodSDK/Rearranged.h>
#include <OrvantaARFoodSDK/Restaurant.h>

#include <cstdio>

int main() {
    const orvanta::Food soup("Soup", "https://example.com/soup.png", "https://example.com/soup.usdz", 4.5);
    const orvanta::Food cake("Cake", "https://example.com/cake.png", "https://example.com/cake.usdz", 3.0);
    const orvanta::Restaurant restaurant("Corner", {soup, cake});
    const auto reordered = orvanta::rearranged(restaurant.foods(), cake);
    std::printf("%s first\n", reordered.front().name().toStdString().c_str());
    return reordered.front() == cake ? 0 : 1;
}
