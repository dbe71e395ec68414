/* What the resources and the code of the dialog share. Read by the resource compiler as well. */
#ifndef VELTRANEDIALOG_LIBRARY_RESOURCE_H
#define VELTRANEDIALOG_LIBRARY_RESOURCE_H

#define DIALOG_DSN 100

/* Of each row, counted from the top: its place in DISPLAY_ORDER is added. */
#define ID_LABEL 1000
#define ID_INPUT 1100
#define ID_KEY 1200
#define ID_NOTE 1300

#define ID_SHOW_PASSWORD 1400
#define ID_REQUIRED 1401

/* For a library: ISOLATIONAWARE_MANIFEST_RESOURCE_ID. */
#define MANIFEST_OF_LIBRARY 2

#endif
