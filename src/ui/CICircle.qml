import QtQuick
import Kestrine

// The CI summary as a small filled circle: orange running, green success, red failure, grey
// cancelled, faint grey unknown.
Rectangle {
    id: root

    property int status: CIStatus.Unknown

    implicitWidth: 10
    implicitHeight: 10
    width: 10
    height: 10
    radius: 5
    color: {
        switch (root.status) {
        case CIStatus.Running:
            return Theme.orange;
        case CIStatus.Success:
            return Theme.green;
        case CIStatus.Failure:
            return Theme.red;
        case CIStatus.Cancelled:
            return Theme.grey;
        default:
            return Theme.alpha(Theme.grey, 0.5);
        }
    }
}
