#pragma once

class QDialog;
class QDialogButtonBox;

// The OK and Cancel buttons of a dialog, tied to its accept() (which a dialog overrides with its
// checks) and reject(). The caller places the box in its layout.
QDialogButtonBox *OkCancelButtons(QDialog *dialog);
