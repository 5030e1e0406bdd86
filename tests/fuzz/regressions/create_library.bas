DIM o = CreateObject("LxBasicFunc")
