package vendor.tavro.hardware.mirx;

import vendor.tavro.hardware.mirx.IMirxCallback;
import vendor.tavro.hardware.mirx.MirxRequestData;

/**
 * A request to the resource-control service. A field that the request kind does not use keeps its default.
 */
@VintfStability
parcelable MirxRequestParcel {
    /** Kind of request. */
    int requestType;
    /** The data list: resources, scene ids, event ids or paths. */
    MirxRequestData[] requestData;
    /** True when the caller's flag argument is 1 or more. */
    boolean flag;
    /** Passed through from the caller; -1 when the caller gives none. */
    int arg4;
    /** Process that the request is made for. */
    int pid;
    /** How long the request holds, in the unit of the service; 0 or less holds until it is released. */
    long duration;
    /** Markers that travel with the request. */
    @nullable String[] stringList;
    /** Handle given by the caller; -1 or 0 asks the service to choose one. */
    int handle;
    /** Told when the request completes or a watched resource changes. */
    @nullable IMirxCallback callback;
    /** Client package; "package" itself is a keyword. */
    @nullable String packageName;
    /** Client identity, free text. */
    @nullable String identity;
    /** Reserved. */
    @nullable int[] numbers;
}
