import QtQuick
import QtTest
import Kestrine

// Every icon of the icon map, loaded the way the screens load it: each must decode to an image
// that draws something. Without Qt's SVG image plugin every one of them fails to decode, and the
// screens lose their buttons' and tabs' pictures without a word.
Item {
    id: root
    width: 200
    height: 200

    Component {
        id: icon
        Icon {
            size: 48
        }
    }

    TestCase {
        name: "Icons"
        when: windowShown

        // How many pixels of `item`, as drawn, are not transparent.
        function paintedPixels(item) {
            const image = grabImage(item);
            let painted = 0;
            for (let x = 0; x < image.width; ++x) {
                for (let y = 0; y < image.height; ++y) {
                    if (image.alpha(x, y) > 0)
                        ++painted;
                }
            }
            return painted;
        }

        function test_everyIconOfTheMapDecodesToANonEmptyImage() {
            const symbols = Object.keys(IconMap.files);
            verify(symbols.length >= 20, "the map lists " + symbols.length + " icons");
            for (const symbol of symbols) {
                const item = createTemporaryObject(icon, root, { symbol: symbol });
                verify(item.source.toString().startsWith("qrc:/"), symbol + ": " + item.source);
                tryVerify(() => item.status !== Image.Loading, 2000, symbol + " is still loading");
                compare(item.status, Image.Ready, symbol + " does not decode");
                verify(item.implicitWidth > 0 && item.implicitHeight > 0, symbol + " has no size");
                verify(paintedPixels(item) > 0, symbol + " draws nothing");
            }
        }

        function test_anUnknownSymbolHasNoFile() {
            compare(IconMap.source("no.such.symbol").toString(), "");
        }
    }
}
