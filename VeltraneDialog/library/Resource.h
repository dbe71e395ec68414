/* Ids for the resources and the code of the dialog. The resource compiler reads this file too. */
#ifndef VELTRANEDIALOG_LIBRARY_RESOURCE_H
#define VELTRANEDIALOG_LIBRARY_RESOURCE_H

#define DIALOG_DSN 100

/* The ids of the first row. Other rows add their index in DISPLAY_ORDER. */
#define ID_LABEL 1000
#define ID_INPUT 1100
#define ID_KEY 1200
#define ID_NOTE 1300

#define ID_SHOW_PASSWORD 1400
#define ID_REQUIRED 1401

/* For a library: ISOLATIONAWARE_MANIFEST_RESOURCE_ID. */
#define MANIFEST_OF_LIBRARY 2

#endif
